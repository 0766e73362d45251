#include "KVTagLib/asf/AsfHeader.h"

#include <algorithm>
#include <limits>
#include <optional>

// The values of a Windows Media header by name. setValues() replaces each value where it stands;
// only what does not fit there moves, to the library, which takes values of any size.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
/// Whether the extended description, which knows neither streams nor languages, can hold the value.
bool fitsExtended(const AsfValue& value)
{
    return (value.type == AsfValue::text || value.type == AsfValue::binary) && value.stream == 0 &&
           value.language == 0 && value.bytes.size() <= maxAsfWord;
}
} // namespace

unsigned AsfHeader::largestValue(Kind kind)
{
    return kind == Kind::library ? std::numeric_limits<unsigned>::max() : maxAsfWord;
}

String AsfHeader::named(Named place) const
{
    const Object* description = find(Kind::description);
    const auto index = static_cast<std::size_t>(place);
    return description && index < description->texts.size() ? asfText(description->texts[index])
                                                            : String();
}

void AsfHeader::setNamed(Named place, const String& text)
{
    if (text != named(place))
        findOrMake(Kind::description).texts[static_cast<std::size_t>(place)] = asfBytes(text);
}

template <class Work>
void AsfHeader::forAttributes(Work work) const
{
    for (const Kind kind : withAttributes)
    {
        for (std::size_t i = 0; i < m_objects.size(); ++i)
        {
            const Object& object = m_objects[i];
            for (std::size_t j = 0; object.kind == kind && j < object.attributes.size(); ++j)
                work(Place{i, j}, object.attributes[j].name);
        }
    }
}

ByteVector AsfHeader::spellingOf(const ByteVector& name) const
{
    std::optional<ByteVector> first;
    bool isExactThere = false;
    forAttributes(
        [&](const Place&, const ByteVector& spelling)
        {
            isExactThere = isExactThere || isSameAsfText(spelling, name);
            if (!first && isSameAsfName(spelling, name))
                first = spelling;
        });
    return isExactThere ? name : first.value_or(name);
}

std::vector<AsfHeader::Place> AsfHeader::placesOf(const ByteVector& spelling) const
{
    std::vector<Place> places;
    forAttributes(
        [&](const Place& place, const ByteVector& other)
        {
            if (isSameAsfText(other, spelling))
                places.push_back(place);
        });
    return places;
}

std::vector<AsfValue> AsfHeader::values(const String& name) const
{
    std::vector<AsfValue> list;
    for (const auto& [object, attribute] : placesOf(spellingOf(asfBytes(name))))
        list.push_back(m_objects[object].attributes[attribute].value);
    return list;
}

StringList AsfHeader::texts(const String& name) const
{
    StringList list;
    for (const AsfValue& value : values(name))
    {
        if (isShown(value))
            list.append(shownText(value));
    }
    return list;
}

void AsfHeader::setValues(const String& name, const std::vector<std::optional<AsfValue>>& values)
{
    const ByteVector spelling = spellingOf(asfBytes(name));
    const std::vector<Place> places = placesOf(spelling);
    const auto isKept = [&](std::size_t i) { return i < values.size() && values[i]; };
    bool fits = true;
    for (std::size_t i = 0; i < places.size() && fits; ++i)
        fits =
            !isKept(i) || values[i]->bytes.size() <= largestValue(m_objects[places[i].object].kind);
    // What an object cannot hold must move, and then all values of the name, or their order would
    // change.
    bool isNew = true;
    for (std::size_t i = 0; i < places.size(); ++i)
    {
        Attribute& attribute = m_objects[places[i].object].attributes[places[i].attribute];
        attribute.isRemoved = !fits || !isKept(i);
        if (attribute.isRemoved)
            continue;
        attribute.value = *values[i];
        isNew = false;
    }
    const auto isGone = [&](const Attribute& attribute)
    {
        return attribute.isRemoved || (!isSameAsfText(attribute.name, spelling) &&
                                       isSameAsfName(attribute.name, spelling));
    };
    for (Object& object : m_objects)
        std::erase_if(object.attributes, isGone);
    std::vector<Attribute> added;
    for (std::size_t i = fits ? places.size() : 0; i < values.size(); ++i)
    {
        if (values[i])
            added.push_back({spelling, *values[i]});
    }
    add(added, isNew);
}

void AsfHeader::add(std::vector<Attribute> attributes, bool isNew)
{
    if (isNew && !attributes.empty() && fitsExtended(attributes.front().value))
    {
        findOrMake(Kind::extended).attributes.push_back(attributes.front());
        attributes.erase(attributes.begin());
    }
    if (attributes.empty())
        return;
    auto& library = findOrMake(Kind::library).attributes;
    library.insert(library.end(), attributes.begin(), attributes.end());
}
} // namespace KVTagLib
