#include "Reorganize/ReorganizeRuleXmlParser.h"

#include "types/Utf.h"

#include <tinyxml.h>

// Texts and attributes of XML elements, converted between UTF-8 and UTF-16. Reading rules is in
// ReorganizeRuleXmlParserLoad.cpp, writing them in ReorganizeRuleXmlParserSave.cpp.

CString CReorganizeRuleXmlParser::UTF8ToUTF16(const char* text)
{
    return qo::fromUtf8(text);
}

void CReorganizeRuleXmlParser::getElemName(const TiXmlElement* element, CString& name)
{
    name = UTF8ToUTF16(element->Value());
}

void CReorganizeRuleXmlParser::setElemName(TiXmlElement* element, const CString& name)
{
    element->SetValue(qo::toUtf8(name));
}

bool CReorganizeRuleXmlParser::elemHasName(const TiXmlElement* element, const char* name)
{
    CString own;
    getElemName(element, own);
    return own == UTF8ToUTF16(name);
}

bool CReorganizeRuleXmlParser::getAttribValue(const TiXmlElement* element,
                                              const char* name,
                                              CString& value)
{
    const char* const text = element->Attribute(name);
    if (text)
        value = UTF8ToUTF16(text);
    return text;
}

bool CReorganizeRuleXmlParser::getAttribIntValue(const TiXmlElement* element,
                                                 const char* name,
                                                 int& value)
{
    return element->QueryIntAttribute(name, &value) == TIXML_SUCCESS;
}

bool CReorganizeRuleXmlParser::getAttribBoolValue(const TiXmlElement* element,
                                                  const char* name,
                                                  bool& value)
{
    int number = 0;
    if (!getAttribIntValue(element, name, number))
        return false;
    value = number != 0;
    return true;
}

void CReorganizeRuleXmlParser::setAttribValue(TiXmlElement* element,
                                              const char* name,
                                              const CString& value)
{
    element->SetAttribute(name, qo::toUtf8(value));
}

void CReorganizeRuleXmlParser::setAttribIntValue(TiXmlElement* element, const char* name, int value)
{
    element->SetAttribute(name, value);
}

void CReorganizeRuleXmlParser::setAttribBoolValue(TiXmlElement* element,
                                                  const char* name,
                                                  bool value)
{
    setAttribIntValue(element, name, value ? 1 : 0);
}
