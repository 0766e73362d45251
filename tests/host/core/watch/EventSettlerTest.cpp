#include "core/watch/EventSettler.h"

#include <gtest/gtest.h>

#include <map>
#include <tuple>

using namespace qo::host;

namespace
{
using Kind = FolderEvent::Kind;
using std::chrono::milliseconds;

/// A settler with a clock and a disk of the test's own.
class Bustle
{
public:
    explicit Bustle()
        : m_settler(milliseconds(1000), [this](const std::string& p) { return disk[p]; })
    {
    }
    Bustle& at(int millis)
    {
        m_now = m_start + milliseconds(millis);
        return *this;
    }
    Bustle& add(const std::string& path) { return m_settler.added(path, m_now), *this; }
    Bustle& change(const std::string& path) { return m_settler.changed(path, m_now), *this; }
    Bustle& remove(const std::string& path) { return m_settler.removed(path, m_now), *this; }
    Bustle& move(const std::string& from, const std::string& to)
    {
        return m_settler.moved(from, to, m_now), *this;
    }
    Bustle& lose() { return m_settler.needRescan("lost", m_now), *this; }
    /// "+added *changed -removed from>to ?reason", what is due at that time.
    std::string reported(int millis)
    {
        at(millis);
        std::string text;
        for (const FolderEvent& event : m_settler.take(m_now))
        {
            static const std::map<Kind, std::string> signs = {
                {Kind::added, "+"}, {Kind::changed, "*"}, {Kind::removed, "-"}, {Kind::moved, ""}};
            text += text.empty() ? "" : " ";
            if (event.kind == Kind::needRescan)
                text += "?" + event.reason;
            else
                text += signs.at(event.kind) + event.path +
                        (event.kind == Kind::moved ? ">" + event.newPath : "");
        }
        return text;
    }
    bool isWaiting() const { return m_settler.nextDue().has_value(); }

    std::map<std::string, EventSettler::Stamp> disk;

private:
    EventSettler::Time m_start{};
    EventSettler::Time m_now{};
    EventSettler m_settler;
};
} // namespace

TEST(EventSettler, TellsAPathOnceItIsQuiet)
{
    Bustle bustle;
    bustle.at(0).add("/a").at(900).change("/a").at(950).change("/b");
    EXPECT_EQ(bustle.reported(1000), "");
    EXPECT_EQ(bustle.reported(1900), "+/a");
    EXPECT_EQ(bustle.reported(1949), "");
    EXPECT_EQ(bustle.reported(1950), "*/b");
    EXPECT_FALSE(bustle.isWaiting());
}

TEST(EventSettler, FileThatStillGrowsIsNotToldYet)
{
    Bustle bustle;
    bustle.disk["/a"] = {10, 1};
    bustle.at(0).add("/a");
    bustle.disk["/a"] = {20, 2};
    EXPECT_EQ(bustle.reported(1000), "");
    EXPECT_EQ(bustle.reported(1999), "");
    EXPECT_EQ(bustle.reported(2000), "+/a");
}

TEST(EventSettler, MergesWhatHappensToOnePath)
{
    const std::tuple<const char*, std::function<void(Bustle&)>, const char*> cases[] = {
        {"written again", [](Bustle& b) { b.change("/a").change("/a"); }, "*/a"},
        {"made anew", [](Bustle& b) { b.remove("/a").add("/a"); }, "*/a"},
        {"gone again", [](Bustle& b) { b.add("/a").remove("/a"); }, "-/a"},
        {"folder removed", [](Bustle& b) { b.change("/a/1").remove("/a"); }, "-/a"},
        {"saved by way of a copy", [](Bustle& b) { b.add("/t").move("/t", "/a"); }, "+/a"},
        {"moved on", [](Bustle& b) { b.move("/a", "/b").move("/b", "/c"); }, "/a>/c"},
        {"moved to and fro", [](Bustle& b) { b.move("/a", "/b").move("/b", "/a"); }, ""},
        {"moved, then gone", [](Bustle& b) { b.move("/a", "/b").remove("/b"); }, "/a>/b -/b"},
        {"moves with its folder",
         [](Bustle& b) { b.change("/a/1").change("/ab").move("/a", "/z"); },
         "/a>/z */ab */z/1"},
        {"moved into a folder that moves",
         [](Bustle& b) { b.move("/x", "/a/x").move("/a", "/b"); },
         "/x>/b/x /a>/b"},
        {"moved out of a folder that moved",
         [](Bustle& b) { b.move("/a", "/b").move("/b/x", "/y"); },
         "/a/x>/y /a>/b"},
        {"moved onto what was removed",
         [](Bustle& b) { b.remove("/b").move("/a", "/b"); },
         "/a>/b"},
        {"lost",
         [](Bustle& b) { b.add("/a").move("/b", "/c").lose().lose().add("/d"); },
         "?lost +/d"}};
    for (const auto& [name, happens, reported] : cases)
    {
        Bustle bustle;
        happens(bustle);
        EXPECT_EQ(bustle.reported(1000), reported) << name;
    }
}
