#include "plugins/webdav/DavTransfer.h"

#include "plugins/base/PluginFailure.h"

#include <boost/make_shared.hpp>

namespace qo::host
{
namespace
{
/// A server that is silent shall not hold up a user who has cancelled.
constexpr std::uint32_t longestCleanUp = 3000; // milliseconds
constexpr std::uint32_t pauseOfCleanUp = 150;  // likewise

/// Servers save what they have of an upload that was cut short a moment after its end: then a part
/// is removed until it stays away. Where that fails, it has a name that no listing shows.
void removePart(HttpClient& client, const HttpAddress& part, bool wasCutShort)
{
    const std::uint32_t start = systemClock().tickCount();
    const auto isOver = [start] { return systemClock().tickCount() - start > longestCleanUp; };
    bool isRemoved = false;
    do
    {
        HttpRequest remove = {"DELETE", part};
        remove.isCanceled = isOver;
        const bool isDone = client.run(remove).isDone();
        if (isRemoved && !isDone)
            return;
        isRemoved = isRemoved || isDone;
        if (wasCutShort)
            systemClock().sleep(pauseOfCleanUp);
    } while (wasCutShort && !isOver());
}
} // namespace

PluginOutcome upload(HttpClient& client,
                     const CString& source,
                     const HttpAddress& folder,
                     const CString& name,
                     bool replace,
                     ThreadOperation::Link& link)
{
    int error = 0;
    const std::unique_ptr<IFile> file = fileSystem().open(source, OpenMode::read, error);
    if (!file)
        return {failureAt(source, error), {}};
    const HttpAddress part = folder.child(toUtf8(partName()), false);
    const HttpAddress target = folder.child(toUtf8(name), false);
    HttpRequest put = {"PUT", part};
    put.file = file.get();
    put.headers = {"Content-Type: application/octet-stream"};
    put.isCanceled = [&link] { return link.isCanceled.load(); };
    put.sent = [&link](std::int64_t sent) { link.done = sent; };
    HttpAnswer answer = client.run(put);
    if (answer.isDone())
    {
        HttpRequest move = {"MOVE", part};
        move.headers = {"Destination: " + target.url(),
                        std::string("Overwrite: ") + (replace ? "T" : "F")};
        move.isCanceled = put.isCanceled;
        answer = client.run(move);
    }
    if (answer.isDone())
    {
        PluginOutcome outcome;
        outcome.results.Add(boost::make_shared<DavEntry>(target, name, false, file->sizeAtOpen()));
        return outcome;
    }
    removePart(client, part, answer.status < 300);
    return {answer.failure, {}};
}
} // namespace qo::host
