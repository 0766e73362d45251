#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct XML_ParserStruct;

namespace qo::host
{
/// What a server says of one file or folder.
struct DavProperties
{
    std::string href;
    bool isFolder = false;
    std::int64_t size = 0;
    std::int64_t used = -1;      ///< bytes; -1: it does not say
    std::int64_t available = -1; ///< likewise
};

/// Reads the answer to PROPFIND while it comes. The server is not trusted: elements may stand in
/// one another 32 deep, a text may have 16 KiB, there may be 100,000 entries, and a document type,
/// which could define texts of any size, ends the reading.
class DavListing
{
public:
    DavListing();
    ~DavListing();
    DavListing(const DavListing&) = delete;
    DavListing& operator=(const DavListing&) = delete;

    /// False for what is no such answer, or not within the limits.
    bool add(std::string_view bytes);
    /// Whether the answer is whole.
    bool finish();
    const std::vector<DavProperties>& entries() const { return m_entries; }

private:
    static void onStart(void* listing, const char* name, const char** attributes);
    static void onEnd(void* listing, const char* name);
    static void takeText(void* listing, const char* text, int length);
    static void
    onDocumentType(void* listing, const char* name, const char*, const char*, int hasSubset);
    void start(std::string_view name);
    void end(std::string_view name);
    void stop();

    XML_ParserStruct* const m_parser;
    int m_depth = 0;
    bool m_isListing = false; ///< the root element was that of an answer
    bool m_isStopped = false;
    std::string m_text;
    std::string m_status; ///< of the properties that are being read
    DavProperties m_current;
    DavProperties m_found; ///< the values of those that the server does have
    std::vector<DavProperties> m_entries;
};
} // namespace qo::host
