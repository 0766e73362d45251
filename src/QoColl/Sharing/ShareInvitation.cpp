#include "QoColl/Sharing/ShareInvitation.h"

#include "common/Log.h"
#include "common/StdioFileEx.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "types/CharClass.h"
#include "types/Utf.h"

#include <nettle/hmac.h>

#include <algorithm>
#include <array>
#include <initializer_list>

namespace
{
constexpr std::size_t digestSize = 32;
using Digest = std::array<unsigned char, digestSize>;

const unsigned char* bytesOf(const std::string& text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}

/// The first half of the digest exclusive-or the second, as 32 upper-case digits.
CString foldedDigest(const Digest& digest)
{
    CString text;
    for (std::size_t i = 0; i < digestSize / 2; ++i)
        text.AppendFormat(u"%02X", static_cast<unsigned>(digest[i] ^ digest[i + digestSize / 2]));
    return text;
}

CStringList listOfKeys(std::initializer_list<const char16_t*> keys)
{
    CStringList list;
    for (const char16_t* const key : keys)
        list.AddTail(key);
    return list;
}
} // namespace

const CString CShareInvitation::LINK_VERSION(u"1");
const CString CShareInvitation::INVITE_LINK(u"https://qokernel.example/anywhere/");
const std::string CShareInvitation::K1("q7Vd2mXe9Ta4LzRk");
const std::string CShareInvitation::K2("Hs5bWc8Yp1NgJu6f");

CString CShareInvitation::GetParam(CMapStringToString& params, const CString& key)
{
    CString value;
    params.Lookup(key, value);
    return value;
}

CString CShareInvitation::FormatCrcParams(CMapStringToString& params, CStringList& keys)
{
    CString text;
    for (POSITION at = keys.GetHeadPosition(); at;)
    {
        const CString* const value = params.PLookup(keys.GetNext(at));
        if (!value)
            return {};
        text += *value;
    }
    return text;
}

CString CShareInvitation::FormatLinkParams(CMapStringToString& params, CStringList& keys)
{
    CString text;
    for (POSITION at = keys.GetHeadPosition(); at;)
    {
        const CString& key = keys.GetNext(at);
        const CString* const value = params.PLookup(key);
        if (!value)
            return {};
        text += (text.IsEmpty() ? CString() : CString(u"&")) + key + u"=" + *value;
    }
    return text;
}

int CShareInvitation::ExtractLinkParams(CString text, CMapStringToString& params)
{
    std::u16string_view rest = text.view();
    while (!rest.empty())
    {
        const std::size_t equals = rest.find(u'=');
        if (equals == std::u16string_view::npos)
            return 0;
        const CString key(rest.substr(0, equals));
        rest.remove_prefix(equals + 1);
        const std::u16string_view value = rest.substr(0, rest.find(u'&'));
        params.SetAt(key, CString(value));
        rest.remove_prefix(std::min(value.size() + 1, rest.size()));
    }
    return 1;
}

CString CShareInvitation::GetCRC(const CString& shareId, CMapStringToString& params)
{
    if (GetParam(params, u"v") != LINK_VERSION)
        return {};
    CStringList keys = listOfKeys({u"t", u"u", u"w", u"v"});
    const CString values = FormatCrcParams(params, keys);
    // A parameter is missing. The id alone would make a check value too, and a link that was
    // stripped of its parameters would be valid.
    if (values.IsEmpty())
        return {};
    const std::string text = qo::toUtf8(shareId + values);
    const std::string key = K1 + K2;
    Digest digest = {};
    hmac_sha256_ctx context;
    ::hmac_sha256_set_key(&context, key.size(), bytesOf(key));
    ::hmac_sha256_update(&context, text.size(), bytesOf(text));
    ::hmac_sha256_digest(&context, digest.size(), digest.data());
    return foldedDigest(digest);
}

CString CShareInvitation::GenerateShareLink(const CString& shareId, CMapStringToString& params)
{
    const CString check = GetCRC(shareId, params);
    if (check.IsEmpty())
        return {};
    params.SetAt(u"c", check);
    CStringList keys = listOfKeys({u"t", u"u", u"w", u"v", u"c"});
    return INVITE_LINK + shareId + u"?" + FormatLinkParams(params, keys);
}

int CShareInvitation::ParseShareLink(const CString& link,
                                     CString& shareId,
                                     CMapStringToString& params)
{
    if (!qo::startsNoCase(link.view(), INVITE_LINK.view()))
        return SHARE_INVITATION_INVALID;
    const int length = INVITE_LINK.GetLength();
    const int question = link.Find(u'?', length);
    if (question < 0)
        return SHARE_INVITATION_INVALID;
    shareId = link.Mid(length, question - length);
    const CString text = link.Mid(question + 1);
    if (!ExtractLinkParams(text, params))
    {
        qo::log(qo::level::error,
                u"ParseShareLink: ExtractLinkParams failed for [%s] for invitation [%s]",
                text,
                link);
        return SHARE_INVITATION_INVALID;
    }
    // Comes before the check value, which a newer link may make in another way.
    const CString version = GetParam(params, u"v");
    if (version.Compare(LINK_VERSION) > 0)
    {
        qo::log(qo::level::error,
                u"ParseShareLink: invalid version [%s] > [%s] for invitation [%s]",
                version,
                LINK_VERSION,
                link);
        return SHARE_INVITATION_NEWER_VERSION;
    }
    const CString check = GetParam(params, u"c");
    if (check.IsEmpty())
    {
        qo::log(qo::level::error, u"ParseShareLink: parameter 'c' is missing from link [%s]", link);
        return SHARE_INVITATION_INVALID;
    }
    const CString own = GetCRC(shareId, params);
    if (own != check)
    {
        qo::log(qo::level::error,
                u"ParseShareLink: crc check failed [%s] != [%s] for invitation [%s]",
                own,
                check,
                link);
        return SHARE_INVITATION_INVALID;
    }
    return SHARE_INVITATION_OK;
}

int CShareInvitation::IsShareInvitation(const CString& link)
{
    CString shareId;
    CMapStringToString params;
    const int result = ParseShareLink(link, shareId, params);
    if (result != SHARE_INVITATION_OK)
        return result;
    const CString type = GetParam(params, u"t");
    return type == u"0" || type == u"1" || type == u"2" ? SHARE_INVITATION_OK
                                                        : SHARE_INVITATION_INVALID;
}

CString CShareInvitation::GetParam(const CString& link, const CString& key)
{
    CString shareId;
    CMapStringToString params;
    return ParseShareLink(link, shareId, params) == SHARE_INVITATION_OK ? GetParam(params, key)
                                                                        : CString();
}

/// The hash makes ids differ even if the system's ids should repeat.
CString CShareInvitation::GenerateShareID(CMapStringToString& params)
{
    CString id = qo::guidToText(qo::systemClock().newGuid());
    id.Remove(u'-');
    const qo::CalendarTime now = qo::systemClock().localTime();
    CString seed = GetParam(params, u"u");
    seed.AppendFormat(u"%02d.%02d %02d:%02d%u",
                      now.day,
                      now.month,
                      now.hour,
                      now.minute,
                      qo::systemClock().tickCount());
    const std::string bytes = qo::toUtf8(seed);
    Digest digest = {};
    sha256_ctx context;
    ::sha256_init(&context);
    ::sha256_update(&context, bytes.size(), bytesOf(bytes));
    ::sha256_digest(&context, digest.size(), digest.data());
    return id + foldedDigest(digest);
}

CString CShareInvitation::GetInvitationFromFile(const CString& path)
{
    CStdioFileEx file;
    CString line;
    if (file.Open(path, CStdioFileEx::modeRead) && (file.ReadString(line) || file.error() == 0))
        return line;
    qo::log(qo::level::error,
            u"CShareInvitation::GetInvitationFromFile() error reading file %s : %s",
            path,
            qo::errorText(file.error()));
    return {};
}
