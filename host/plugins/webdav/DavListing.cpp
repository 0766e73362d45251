#include "plugins/webdav/DavListing.h"

#include "core/base/Trimmed.h"

#include <expat.h>

#include <charconv>

namespace qo::host
{
namespace
{
constexpr int mostLevels = 32;
constexpr std::size_t longestText = std::size_t{16} * 1024;
constexpr std::size_t mostEntries = 100'000;

std::int64_t numberIn(std::string_view text, std::int64_t otherwise)
{
    while (!text.empty() && text.front() <= ' ')
        text.remove_prefix(1);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && number >= 0 ? number : otherwise;
}
} // namespace

DavListing::DavListing() : m_parser(XML_ParserCreateNS(nullptr, '|'))
{
    if (!m_parser)
        return;
    XML_SetUserData(m_parser, this);
    XML_SetElementHandler(m_parser, onStart, onEnd);
    XML_SetCharacterDataHandler(m_parser, takeText);
    XML_SetStartDoctypeDeclHandler(m_parser, onDocumentType);
}

DavListing::~DavListing()
{
    XML_ParserFree(m_parser);
}

bool DavListing::add(std::string_view bytes)
{
    return m_parser && !m_isStopped &&
           XML_Parse(m_parser, bytes.data(), static_cast<int>(bytes.size()), 0) == XML_STATUS_OK;
}

bool DavListing::finish()
{
    return m_parser && !m_isStopped && XML_Parse(m_parser, "", 0, 1) == XML_STATUS_OK &&
           m_isListing;
}

void DavListing::stop()
{
    m_isStopped = true;
    XML_StopParser(m_parser, XML_FALSE);
}

void DavListing::onStart(void* listing, const char* name, const char**)
{
    static_cast<DavListing*>(listing)->start(name);
}

void DavListing::onEnd(void* listing, const char* name)
{
    static_cast<DavListing*>(listing)->end(name);
}

void DavListing::takeText(void* listing, const char* text, int length)
{
    auto* const self = static_cast<DavListing*>(listing);
    if (self->m_isStopped)
        return;
    self->m_text.append(text, static_cast<std::size_t>(length));
    if (self->m_text.size() > longestText)
        self->stop();
}

void DavListing::onDocumentType(void* listing, const char*, const char*, const char*, int)
{
    static_cast<DavListing*>(listing)->stop();
}

void DavListing::start(std::string_view name)
{
    if (++m_depth > mostLevels || m_entries.size() > mostEntries)
        return stop();
    m_text.clear();
    if (m_depth == 1)
        m_isListing = name == "DAV:|multistatus";
    else if (name == "DAV:|response")
        m_current = DavProperties();
    else if (name == "DAV:|propstat")
    {
        m_found = m_current;
        m_status.clear();
    }
    else if (name == "DAV:|collection")
        m_found.isFolder = true;
}

void DavListing::end(std::string_view name)
{
    --m_depth;
    const std::string_view text = trimmed(m_text);
    if (name == "DAV:|href")
        m_current.href = text;
    else if (name == "DAV:|getcontentlength")
        m_found.size = numberIn(text, 0);
    else if (name == "DAV:|quota-used-bytes")
        m_found.used = numberIn(text, -1);
    else if (name == "DAV:|quota-available-bytes")
        m_found.available = numberIn(text, -1);
    else if (name == "DAV:|status")
        m_status = text;
    else if (name == "DAV:|propstat" && m_status.find(" 200") != std::string::npos)
    {
        // What the server does not have comes in a part of its own with another status.
        m_found.href = m_current.href;
        m_current = m_found;
    }
    else if (name == "DAV:|response" && !m_current.href.empty())
        m_entries.push_back(m_current);
    m_text.clear();
}
} // namespace qo::host
