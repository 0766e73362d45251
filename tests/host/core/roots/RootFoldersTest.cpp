#include "core/roots/RootFolders.h"

#include "core/base/HostFiles.h"
#include "host/core/MessageOf.h"

TEST(RootFolders, NoPathByTheLetterOfADeviceIsKept)
{
    qo::host::RootFolders roots;
    for (const char16_t* const path : {u"D:\\Music", u"z:\\"})
        EXPECT_NE(messageOf([&] { roots.add(path, CQoPathInfo::audioIsMusic); },
                            qo::host::ExitCode::usage)
                      .find("lies on a device"),
                  std::string::npos);
    EXPECT_TRUE(roots.folders().IsEmpty());
    for (const char16_t* const path : {u"C:\\Music", u"\\\\usb:D:\\Music", u"\\\\nas\\Music"})
        EXPECT_EQ(qo::host::lastingPath(path), CString(path));
}
