#include "types/MisreadText.h"

#include "types/Charset.h"
#include "types/Utf.h"

#include <gtest/gtest.h>

#include <sstream>

namespace
{
/// The bytes as windows-1252 reads them, line by line.
std::vector<CString> misread(const std::string& bytes)
{
    std::vector<CString> texts;
    std::istringstream lines(bytes);
    for (std::string text; std::getline(lines, text);)
        texts.push_back(qo::fromCharset(text, "windows-1252"));
    return texts;
}

/// The same as Latin-1, which has controls where windows-1252 has letters.
std::vector<CString> asLatin1(const std::string& bytes)
{
    std::vector<CString> texts(1);
    for (const char c : bytes)
    {
        if (c == '\n')
            texts.emplace_back();
        else
            texts.back() += static_cast<char16_t>(static_cast<unsigned char>(c));
    }
    return texts;
}

std::string reread(const std::vector<CString>& texts, const std::string& charset)
{
    std::string all;
    for (const CString& text : texts)
        all += (all.empty() ? "" : "\n") + qo::toUtf8(qo::rereadText(text, charset));
    return all;
}

struct MisreadCase
{
    const char* charset;
    const char* bytes;
    const char* text;
};
constexpr MisreadCase misreadCases[] = {
    {"windows-1251",
     "\xca\xe8\xed\xee\n\xc3\xf0\xf3\xef\xef\xe0 "
     "\xea\xf0\xee\xe2\xe8\n\xc7\xe0\xea\xf0\xee\xe9 \xe7\xe0 \xec\xed\xee\xe9 "
     "\xe4\xe2\xe5\xf0\xfc, \xff \xf3\xf5\xee\xe6\xf3\n\xcc\xe0\xec\xe0, \xec\xfb \xe2\xf1\xe5 "
     "\xf2\xff\xe6\xe5\xeb\xee \xe1\xee\xeb\xfc\xed\xfb",
     "Кино\nГруппа крови\nЗакрой за мной дверь, я ухожу\nМама, мы все тяжело больны"},
    {"windows-1251",
     "\xca\xe8\xed\xee\n\xc3\xf0\xf3\xef\xef\xe0 \xea\xf0\xee\xe2\xe8 "
     "(live)\n\xc7\xe2\xe5\xe7\xe4\xe0 \xef\xee \xe8\xec\xe5\xed\xe8 \xd1\xee\xeb\xed\xf6\xe5",
     "Кино\nГруппа крови (live)\nЗвезда по имени Солнце"},
    {"KOI8-R",
     "\xe1\xcb\xd7\xc1\xd2\xc9\xd5\xcd\n\xf3\xc5\xd2\xc5\xc2\xd2\xcf "
     "\xe7\xcf\xd3\xd0\xcf\xc4\xc1 \xcd\xcf\xc5\xc7\xcf\n\xf0\xcf\xc4 \xce\xc5\xc2\xcf\xcd "
     "\xc7\xcf\xcc\xd5\xc2\xd9\xcd",
     "Аквариум\nСеребро Господа моего\nПод небом голубым"},
    {"ISO-8859-7",
     "\xc3\xe9\xfe\xf1\xe3\xef\xf2 \xcd\xf4\xe1\xeb\xdc\xf1\xe1\xf2\n\xcf "
     "\xcc\xdd\xf4\xef\xe9\xea\xef\xf2",
     "Γιώργος Νταλάρας\nΟ Μέτοικος"},
    {"GB18030",
     "\xb5\xcb\xc0\xf6\xbe\xfd\n\xd4\xc2\xc1\xc1\xb4\xfa\xb1\xed\xce\xd2\xb5\xc4\xd0\xc4\n\xcc"
     "\xf0\xc3\xdb\xc3\xdb\n\xb5\xab\xd4\xb8\xc8\xcb\xb3\xa4\xbe\xc3",
     "邓丽君\n月亮代表我的心\n甜蜜蜜\n但愿人长久"},
    {"Big5",
     "\xbeH\xc4R\xa7g\n\xa4\xeb\xabG\xa5N\xaa\xed\xa7\xda\xaa\xba\xa4\xdf\n\xa6\xfd\xc4@"
     "\xa4H\xaa\xf8\xa4[",
     "鄧麗君\n月亮代表我的心\n但願人長久"},
    {"Shift_JIS",
     "\x89"
     "F\x91\xbd\x93"
     "c\x83q\x83J\x83\x8b\n\x82\xa0\x82\xc8\x82\xbd\x82\xf0\x96Y\x82\xea\x82\xc8\x82\xa2\n\x83t"
     "\x83@\x81[\x83X\x83g\x83\x89\x83u",
     "宇多田ヒカル\nあなたを忘れない\nファーストラブ"},
    {"EUC-JP",
     "\xb1\xa7\xc2\xbf\xc5\xc4\xa5\xd2\xa5\xab\xa5\xeb\n\xa4\xa2\xa4\xca\xa4\xbf\xa4\xf2\xcb"
     "\xba\xa4\xec\xa4\xca\xa4\xa4\n\xa5\xd5\xa5\xa1\xa1\xbc\xa5\xb9\xa5\xc8\xa5\xe9\xa5\xd6",
     "宇多田ヒカル\nあなたを忘れない\nファーストラブ"},
    {"EUC-KR",
     "\xbc\xad\xc5\xc2\xc1\xf6\xbf\xcd \xbe\xc6\xc0\xcc\xb5\xe9\n\xb3\xad "
     "\xbe\xcb\xbe\xc6\xbf\xe4\n\xc8\xaf\xbb\xf3 \xbc\xd3\xc0\xc7 \xb1\xd7\xb4\xeb",
     "서태지와 아이들\n난 알아요\n환상 속의 그대"},
    {"UTF-8",
     "\xd0\x9a\xd0\xb8\xd0\xbd\xd0\xbe\n\xd0\x93\xd1\x80\xd1\x83\xd0\xbf\xd0\xbf\xd0\xb0 "
     "\xd0\xba\xd1\x80\xd0\xbe\xd0\xb2\xd0\xb8",
     "Кино\nГруппа крови"},
};
} // namespace

TEST(MisreadText, OtherScriptsAreFoundAndReadAgain)
{
    for (const auto& [charset, bytes, text] : misreadCases)
    {
        for (const std::vector<CString>& texts : {misread(bytes), asLatin1(bytes)})
        {
            SCOPED_TRACE(charset);
            EXPECT_EQ(qo::misreadCharsetOf(texts).charset, charset);
            EXPECT_EQ(reread(texts, charset), text);
            EXPECT_TRUE(qo::mayBeMisread(texts.front()));
        }
    }
}

TEST(MisreadText, WordsThatWereReadRightStay)
{
    const std::vector<std::vector<std::string>> cases = {
        {"Motörhead", "Overkill"},
        {"Beyoncé", "Déjà Vu"},
        {"Björk Guðmundsdóttir", "Ágætis byrjun", "Viðrar vel til loftárása", "Ný batterí"},
        {"Die Ärzte", "Süßes oder Saures", "Über", "Öl"},
        {"Mylène Farmer", "L’âme-stram-gram", "À la carte", "Été", "Où"},
        {"Øl", "ÆØÅ", "Å"},
        {"Sigur Rós", "Þórr", "Ölæði"},
        {"Mötley Crüe", "Queensrÿche", "Ænima", "ÄÖÜ"},
        {"Ação", "São João", "É", "Ñañá"}};
    for (const std::vector<std::string>& row : cases)
    {
        SCOPED_TRACE(row.front());
        std::vector<CString> texts;
        for (const std::string& text : row)
            texts.push_back(qo::fromUtf8(text));
        EXPECT_EQ(qo::misreadCharsetOf(texts).charset, "");
        for (const char* charset : {"windows-1251", "KOI8-R", "GB18030", "Shift_JIS", "EUC-KR"})
            EXPECT_EQ(qo::rereadText(texts.front(), charset), CString()) << charset;
    }
    // Neither ASCII nor other scripts come from windows-1252.
    EXPECT_FALSE(qo::mayBeMisread(u"Overkill"));
    EXPECT_FALSE(qo::mayBeMisread(u"Кино"));
}

TEST(MisreadText, AnEncodingOfLatinLettersIsTakenAtItsWord)
{
    EXPECT_EQ(qo::rereadText(u"Antonín Dvoøák", "windows-1250"), CString(u"Antonín Dvořák"));
    EXPECT_EQ(qo::rereadText(u"Motörhead", "windows-1250"), CString());
    EXPECT_EQ(qo::rereadText(u"Кино", "windows-1251"), CString());
    EXPECT_EQ(qo::rereadText(u"Êèíî", "no such thing"), CString());
}
