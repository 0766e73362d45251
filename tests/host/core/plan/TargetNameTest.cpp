#include "core/plan/TargetName.h"

#include "support/Print.h"

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

using namespace qo::host;
using qo::VolumeRules;

namespace
{
constexpr VolumeRules posix;
constexpr VolumeRules windows{255, VolumeRules::Length::utf16Units, true, true};

CString repeated(const char16_t* text, int count)
{
    CString result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}
} // namespace

TEST(TargetName, KeyIsTheSameForNamesThatDifferInCaseOrUnicodeFormAlone)
{
    const std::tuple<const char16_t*, const char16_t*, bool> cases[] = {
        {u"Song.MP3", u"song.mp3", true},
        {u"\u00C9t\u00E9", u"E\u0301te\u0301", true},
        {u"\u212Bngstr\u00F6m", u"a\u030Angstro\u0308m", true},
        {u"\uAC00", u"\u1100\u1161", true},
        {u"Ete", u"\u00C9t\u00E9", false},
        {u"a b", u"a_b", false},
        {u"x\uF0FF", u"x\uF0FE", false}};
    for (const auto& [a, b, isSame] : cases)
        EXPECT_EQ(sameNameKey(CString(a)) == sameNameKey(CString(b)), isSame)
            << qo::toUtf8(CString(a)) << " and " << qo::toUtf8(CString(b));
    EXPECT_EQ(sameNameKey(std::string("/m/\xC3\x89\xFF")),
              sameNameKey(std::string("/M/e\xCC\x81\xFF")));
    EXPECT_NE(sameNameKey(std::string("/m/\xFE")), sameNameKey(std::string("/m/\xFF")));
}

TEST(TargetName, ValuesCannotReachOutOfTheirName)
{
    const struct
    {
        CString value;
        const char16_t* plain;
    } cases[] = {{u"AC/DC", u"AC_DC"},
                 {u"..\\..\\etc", u".._.._etc"},
                 {u" \t x \n", u"x"},
                 {u"a\nb\u007Fc", u"a_b_c"},
                 {CString(u"a\0b", 3), u"a_b"},
                 {u"\uF02E\uF02E\uF02F", u"___"},
                 {CString(std::u16string_view(u"\xD83C\xDFB5 \xD83C")), u"\U0001F3B5 _"},
                 {CString(std::u16string_view(u"\xDFB5\xD83C")), u"__"},
                 {u"E\u0301", u"\u00C9"}};
    for (const auto& c : cases)
    {
        const CString plain = plainValue(c.value);
        EXPECT_EQ(plain, c.plain);
        EXPECT_FALSE(qo::toSystemPath(u"C:\\" + plain).empty()) << qo::toUtf8(plain);
    }
}

TEST(TargetName, LongNamesAreCutBetweenCharactersAndKeepTheirExtension)
{
    const struct
    {
        const char* what;
        const char16_t* unit; ///< so many of it, and the end behind them
        int count;
        const char16_t* end;
        int onPosix; ///< so many stay, and the extension behind them
        int onWindows;
        const char16_t* windowsUnit = nullptr; ///< where it is another one
    } cases[] = {{"fits", u"x", 251, u".mp3", 251, 251},
                 {"one too long", u"x", 252, u".mp3", 251, 251},
                 {"two bytes", u"\u00FC", 200, u".mp3", 125, 200},
                 {"three bytes", u"\u3042", 255, u".mp3", 83, 251},
                 {"pairs", u"\U0001F3B5", 200, u".flac", 62, 125},
                 {"bytes", u"\uF0FF", 300, u".mp3", 251, 251, u"_"},
                 {"marks stay together", u"x", 250, u"q\u0301\u0323.mp3", 250, 250},
                 {"no blank at the cut", u"x", 249, u" . y.mp3", 249, 249}};
    for (const auto& c : cases)
    {
        const CString end(c.end);
        const CString extension = end.Mid(end.ReverseFind(u'.'));
        const CString name = repeated(c.unit, c.count) + end;
        const CString onPosix = repeated(c.unit, c.onPosix) + extension;
        EXPECT_EQ(fittingFileName(name, posix), onPosix) << c.what;
        EXPECT_EQ(fittingFileName(name, windows),
                  repeated(c.windowsUnit ? c.windowsUnit : c.unit, c.onWindows) + extension)
            << c.what;
        EXPECT_LE(qo::toSystemPath(u"C:\\" + onPosix).size(), 256U) << c.what;
    }
    for (const VolumeRules& rules : {posix, windows})
        EXPECT_EQ(fittingFileName(u"x." + repeated(u"e", 255), rules), u"") << "no room";
    EXPECT_EQ(fittingFolderName(repeated(u"x.", 200), posix), repeated(u"x.", 127) + u"x");
    const VolumeRules narrow{143, VolumeRules::Length::bytes, false, false};
    EXPECT_EQ(fittingFileName(repeated(u"x", 200) + u".ogg", narrow),
              repeated(u"x", 139) + u".ogg");
}

TEST(TargetName, OnlyDisksOfWindowsAskForItsNames)
{
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"con", u"con_"},
        {u"LPT1.txt", u"LPT1_.txt"},
        {u"Nul .tar.gz", u"Nul_ .tar.gz"},
        {u"COM0.mp3", u"COM0.mp3"},
        {u"Concert.mp3", u"Concert.mp3"},
        {u"What?: \"1<2\".mp3", u"What__ _1_2_.mp3"},
        {u"end.", u"end_"},
        {u"end ", u"end_"},
        {u"x\uF05Cy\uF001", u"x_y_"}};
    for (const auto& [name, valid] : cases)
    {
        EXPECT_EQ(fittingFolderName(name, windows), valid);
        EXPECT_EQ(fittingFileName(name, windows), valid);
        EXPECT_EQ(fittingFolderName(name, posix), name);
    }
}
