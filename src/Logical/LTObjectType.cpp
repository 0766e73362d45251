#include "Logical/LTObjectType.h"

const CLTObjectType::TypeInfo CLTObjectType::m_typesInfo[typesCount] = {{Album, u"Album"},
                                                                        {Artist, u"Artist"},
                                                                        {Genre, u"Genre"},
                                                                        {Lyrics, u"Lyrics"},
                                                                        {Picture, u"Picture"},
                                                                        {Track, u"Track"}};

const char16_t* CLTObjectType::getTypeName(EType type) noexcept
{
    for (const TypeInfo& info : m_typesInfo)
    {
        if (info.type == type)
            return info.name;
    }
    return nullptr;
}
