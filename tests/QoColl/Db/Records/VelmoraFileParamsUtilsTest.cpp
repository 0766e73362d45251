#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"

#include "QoColl/Db/Records/ACTrackStorage.h"
#include "QoColl/Db/Records/AcParamsUtils.h"
#include "QoColl/Db/Records/FingerprintCutInformation.h"
#include "QoColl/Db/Records/FpParamsUtils.h"
#include "support/DocExample.h"
#include "support/LogCapture.h"
#include "support/Print.h"
#include "types/Utf.h"

#include <gtest/gtest.h>

#include <utility>

using QorganizerDef::VelmoraFileParams;

namespace
{
VelmoraFileParams parsed(const CString& text)
{
    VelmoraFileParams params;
    EXPECT_TRUE(CVelmoraFileParamsUtils::FromDbParam(text, params));
    return params;
}

CString valueOf(const VelmoraFileParams& params, int id)
{
    return CVelmoraFileParamsUtils::ExtractParam(CVelmoraFileParamsUtils::ToDbParam(params), id);
}

TEST(VelmoraFileParamsUtils, ExampleOfTheDocumentIsWrittenBackAsItStands)
{
    const std::string text = docExample("parameter-strings.md", "params");
    VelmoraFileParams params;
    ASSERT_TRUE(CVelmoraFileParamsUtils::FromDbParam(qo::fromUtf8(text), params));
    EXPECT_EQ(params.source, IPostProcessingQueue::sourceRadioRecording);
    EXPECT_EQ(params.stationName, u"Radio North");
    EXPECT_EQ(params.recordingEnd - params.recordingStart, 180);
    EXPECT_EQ(qo::toUtf8(CVelmoraFileParamsUtils::ToDbParam(params)), text);
}

TEST(VelmoraFileParamsUtils, SourceDecidesWhatIsWritten)
{
    // Every value set: a parameter shows its value only for its sources.
    CString everything;
    for (int id = 0; id <= 43; ++id)
        if (id != 1)
            everything.AppendFormat(u"%d:1\n", id);
    VelmoraFileParams params = parsed(everything);
    const std::pair<std::vector<int>, std::vector<int>> cases[] = {
        {{0, 0x400, 0x2000}, {}},
        {{0x1, 0x2}, {32, 33, 34, 35, 36}},
        {{0x4, 0x100}, {3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20}},
        {{0x8, 0x80}, {21, 22, 23, 28, 29, 30, 31, 40, 41, 42}},
        {{0x10, 0x40}, {2}},
        {{0x20}, {37}},
        {{0x200}, {43}},
        {{0x800}, {39}},
        {{0x88}, {}}, // several bits are none of the sources
    };
    for (const auto& [sources, ids] : cases)
    {
        for (const int source : sources)
        {
            params.source = static_cast<eItemSource>(source);
            std::vector<int> written;
            for (int id = 2; id <= 43; ++id)
            {
                const bool isAlways = (id >= 24 && id <= 27) || id == 38;
                if (valueOf(params, id).Find(u'1') == 0 && !isAlways)
                    written.push_back(id);
            }
            EXPECT_EQ(written, ids) << "source " << source;
            for (const int id : {0, 24, 25, 26, 27, 38})
                EXPECT_EQ(valueOf(params, id), u"1") << id;
        }
    }
}

TEST(VelmoraFileParamsUtils, NumbersAreBoundedWhenTheyAreRead)
{
    EXPECT_EQ(parsed(u"1:16383").source, 0x3FFF);
    EXPECT_EQ(parsed(u"1:16384").source, 0);
    EXPECT_EQ(parsed(u"1:-1").source, 0);
    EXPECT_EQ(parsed(u"38:12").mediaFileType, 12);
    EXPECT_EQ(parsed(u"38:10").mediaFileType, 0);
    EXPECT_EQ(parsed(u"6:4").conversionResult, 0);
    EXPECT_EQ(parsed(u"13:5").conversionCutQuality, 0);
    EXPECT_EQ(parsed(u"28:4").recordingCutQuality, 4);
    EXPECT_EQ(parsed(u"7:1.900000").conversionSpeed, 1.0);
    EXPECT_FALSE(parsed(u"31:-1").isShow);
    EXPECT_TRUE(parsed(u"31:2").isShow);
    EXPECT_EQ(parsed(u"40:-9223372036854775808").recordingStart, INT64_MIN);
    VelmoraFileParams params;
    params.marks[1] = -5;
    EXPECT_EQ(valueOf(params, 25), u"0");
}

TEST(VelmoraFileParamsUtils, InvalidLinesAreLoggedAndPassedOver)
{
    LogCapture log;
    const VelmoraFileParams params = parsed(u"99:x\nabc\n:y\n\n21:a:b");
    EXPECT_EQ(params.stationName, u"a:b");
    const std::string lines = "99:x\nabc\n:y\n\n21:a:b]";
    EXPECT_TRUE(
        log.has("CVelmoraFileParamsUtils::FromDbParam: invalid param [x] [99] [" + lines, 10));
    EXPECT_TRUE(
        log.has("CVelmoraFileParamsUtils::FromDbParam: invalid param [abc] [i=1] [" + lines, 10));
    EXPECT_TRUE(
        log.has("CVelmoraFileParamsUtils::FromDbParam: invalid param [:y] [i=2] [" + lines, 10));
    EXPECT_EQ(log.count("invalid param"), 4) << log.all();
    EXPECT_EQ(parsed(u"word:text").origin, u"text") << "no number counts as 0";
    EXPECT_EQ(CVelmoraFileParamsUtils::ExtractParam(u"bad\n5:first\n5:second\nworse", 5), u"first");
    EXPECT_EQ(log.count("ExtractParam: invalid param"), 1) << "what comes after it is not read";
    EXPECT_TRUE(log.has("CVelmoraFileParamsUtils::ExtractParam: invalid param [bad] [i=0] [", 10));
    LogCapture bounded;
    parsed(CString(u'x', 5000) + CString(u'\n', 2000));
    EXPECT_EQ(bounded.count("invalid param"), 1000);
    EXPECT_LT(bounded.all().size(), 1000U * 500);
}

TEST(VelmoraFileParamsUtils, MissingLinesKeepTheFieldsButForTheMediaType)
{
    VelmoraFileParams params;
    params.origin = u"kept";
    params.mediaFileType = CVelmoraMediaFileTypes::typePodcasts;
    EXPECT_FALSE(CVelmoraFileParamsUtils::FromDbParam(u"", params));
    EXPECT_EQ(params.mediaFileType, CVelmoraMediaFileTypes::typePodcasts);
    EXPECT_TRUE(CVelmoraFileParamsUtils::FromDbParam(u"\n", params));
    EXPECT_EQ(params.origin, u"kept");
    EXPECT_EQ(params.mediaFileType, CVelmoraMediaFileTypes::typeNone);
}

TEST(VelmoraFileParamsUtils, TextCannotInjectParameters)
{
    VelmoraFileParams params;
    params.origin = u"%s title\r\n1:8\n42:1";
    const VelmoraFileParams read = parsed(CVelmoraFileParamsUtils::ToDbParam(params));
    EXPECT_EQ(read.origin, u"%s title  1:8 42:1");
    EXPECT_EQ(read.source, 0);
    EXPECT_FALSE(read.isJingle);
}

TEST(AcParamsUtils, TrackStorageComesBack)
{
    const CString text = u"0:9223372036854775807\n1:-1\n2:2\n3:3\n4:4\n5:5\n6:6\n7:7\n";
    AudioCutterCore::ACTrackStorage params;
    EXPECT_FALSE(CAcParamsUtils::fromString(u"", params));
    ASSERT_TRUE(CAcParamsUtils::fromString(text, params));
    EXPECT_EQ(CAcParamsUtils::toString(params), text);
    LogCapture log;
    EXPECT_TRUE(CAcParamsUtils::fromString(u"8:1\nx", params));
    EXPECT_TRUE(log.has("CAcParamsUtils::fromString: invalid param [1] [8] [8:1\nx]", 10))
        << log.all();
    EXPECT_TRUE(log.has("CAcParamsUtils::fromString: invalid param [x] [i=1] [8:1\nx]", 10))
        << log.all();
}

TEST(FpParamsUtils, CutInformationComesBack)
{
    const CString text = u"0:1\n1:2\n2:3\n3:4\n4:5\n5:1099511627776\n6:-7\n";
    Fingerprint::FingerprintCutInformation params;
    ASSERT_TRUE(CFpParamsUtils::fromString(text, params));
    EXPECT_EQ(CFpParamsUtils::toString(params), text);
    EXPECT_EQ(CFpParamsUtils::initParamsFormatString(),
              u"0:%d\n1:%d\n2:%d\n3:%d\n4:%d\n5:%I64d\n6:%I64d\n");
}
} // namespace
