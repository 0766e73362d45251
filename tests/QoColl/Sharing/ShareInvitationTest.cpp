#include "QoColl/Sharing/ShareInvitation.h"

#include "support/LogCapture.h"
#include "support/Print.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{
constexpr int valid = CShareInvitation::SHARE_INVITATION_OK;
constexpr int invalid = CShareInvitation::SHARE_INVITATION_INVALID;
constexpr int newer = CShareInvitation::SHARE_INVITATION_NEWER_VERSION;

CMapStringToString sampleParams()
{
    CMapStringToString params;
    params.SetAt(u"t", u"1");
    params.SetAt(u"u", u"Ann S\u00F6derstr\u00F6m");
    params.SetAt(u"w", u"wx");
    params.SetAt(u"v", u"1");
    return params;
}

CString sampleLink()
{
    CMapStringToString params = sampleParams();
    return CShareInvitation::GenerateShareLink(u"share17", params);
}

CString changed(const char16_t* from, const char16_t* to)
{
    CString link = sampleLink();
    EXPECT_EQ(link.Replace(from, to), 1);
    return link;
}
} // namespace

TEST(ShareInvitation, LinkHoldsItsParametersInOrderAndTheKeyedCheckValue)
{
    CMapStringToString params = sampleParams();
    const CString link = CShareInvitation::GenerateShareLink(u"share17", params);
    // The check value was computed with another implementation of the keyed hash.
    EXPECT_EQ(link,
              CString(u"https://qokernel.example/anywhere/share17?t=1&u=Ann "
                      u"S\u00F6derstr\u00F6m&w=wx&v=1&c=EB40B56798186CC6A061607B7BBC6995"));
    EXPECT_EQ(params[u"c"], CString(u"EB40B56798186CC6A061607B7BBC6995"));
    EXPECT_EQ(CShareInvitation::GetParam(link, u"u"), params[u"u"]);

    for (const char16_t* const key : {u"t", u"u", u"w", u"v"})
    {
        CMapStringToString less = sampleParams();
        less.RemoveKey(key);
        EXPECT_EQ(CShareInvitation::GenerateShareLink(u"share17", less), CString());
    }
    params.SetAt(u"v", u"2");
    EXPECT_EQ(CShareInvitation::GenerateShareLink(u"share17", params), CString());
}

TEST(ShareInvitation, AlteredLinksAreRefused)
{
    const CString base = CShareInvitation::INVITE_LINK;
    const CString check = CString(u"c=EB40B56798186CC6A061607B7BBC6995");
    const struct
    {
        const char* what;
        CString link;
        int parsed;
    } cases[] = {{"as made", sampleLink(), valid},
                 {"base in other case", changed(u"https://qokernel", u"HTTPS://QoKernel"), valid},
                 {"other order",
                  base + u"share17?" + check + u"&w=wx&v=1&t=1&u=Ann S\u00F6derstr\u00F6m",
                  valid},
                 {"repeated key", changed(u"t=1", u"t=0&t=1"), valid},
                 {"further key", changed(u"?t=1", u"?x=y&t=1"), valid},
                 {"other base", changed(u"anywhere", u"nowhere"), invalid},
                 {"no parameters", base + u"share17", invalid},
                 {"empty parameters", base + u"share17?", invalid},
                 {"part without sign", sampleLink() + u"&x", invalid},
                 {"other id", changed(u"share17", u"share18"), invalid},
                 {"other user", changed(u"Ann", u"Eve"), invalid},
                 {"check value in lower case", changed(u"EB40", u"eb40"), invalid},
                 {"newer, with a wrong check value", changed(u"v=1", u"v=2"), newer},
                 {"compared as text", changed(u"v=1", u"v=10"), newer},
                 {"older", changed(u"v=1", u"v=0"), invalid},
                 {"stripped", base + u"share17?v=1&" + check, invalid},
                 {"no check value", base + u"share17?t=1&u=a&w=b&v=1", invalid},
                 {"nothing", CString(), invalid}};
    for (const auto& each : cases)
    {
        SCOPED_TRACE(each.what);
        CString shareId;
        CMapStringToString params;
        EXPECT_EQ(CShareInvitation::ParseShareLink(each.link, shareId, params), each.parsed);
        EXPECT_EQ(CShareInvitation::IsShareInvitation(each.link), each.parsed);
        EXPECT_EQ(CShareInvitation::GetParam(each.link, u"w").IsEmpty(), each.parsed != valid);
        EXPECT_TRUE(each.parsed != valid || shareId == u"share17");
    }

    CMapStringToString params = sampleParams();
    params.SetAt(u"t", u"7");
    const CString link = CShareInvitation::GenerateShareLink(u"share17", params);
    CString shareId;
    EXPECT_EQ(CShareInvitation::ParseShareLink(link, shareId, params), valid);
    EXPECT_EQ(CShareInvitation::IsShareInvitation(link), invalid);
}

TEST(ShareInvitation, ShareIdsDiffer)
{
    CMapStringToString params = sampleParams();
    const CString first = CShareInvitation::GenerateShareID(params);
    EXPECT_EQ(first.GetLength(), 64);
    const auto isUpper = [](char16_t c)
    { return (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'F'); };
    const auto isLower = [](char16_t c)
    { return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f'); };
    EXPECT_TRUE(std::ranges::all_of(first.view().substr(0, 32), isLower));
    EXPECT_TRUE(std::ranges::all_of(first.view().substr(32), isUpper));
    EXPECT_NE(first, CShareInvitation::GenerateShareID(params));
}

TEST(ShareInvitation, FileGivesItsFirstLine)
{
    const TempDir dir;
    dir.write("link.txt", "\xEF\xBB\xBFhttps://x\r\nmore\r\n");
    dir.write("empty.txt", "");
    EXPECT_EQ(CShareInvitation::GetInvitationFromFile(dir.collPath("link.txt")),
              CString(u"https://x"));
    LogCapture log;
    EXPECT_EQ(CShareInvitation::GetInvitationFromFile(dir.collPath("empty.txt")), CString());
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(CShareInvitation::GetInvitationFromFile(dir.collPath("none.txt")), CString());
    EXPECT_TRUE(log.has("GetInvitationFromFile() error reading file", 10));
}
