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
void removePart(HttpClient& client, const HttpAddress& part, bool mayComeBack)
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
        if (mayComeBack)
            systemClock().sleep(pauseOfCleanUp);
    } while (mayComeBack && !isOver());
}

/// What the server says of a file, with its entity tag. That there is none, or that it does not
/// answer such questions, is no failure.
HttpAnswer look(HttpClient& client, const HttpAddress& address, ThreadOperation::Link& link)
{
    constexpr long absent = 404;
    constexpr long notAllowed = 405;
    constexpr long notKnown = 501;
    HttpRequest head = {"HEAD", address};
    head.isCanceled = [&link] { return link.isCanceled.load(); };
    HttpAnswer answer = client.run(head);
    for (const long status : {absent, notAllowed, notKnown})
    {
        if (answer.status == status)
            return {};
    }
    return answer;
}

/// Whether the connection broke off, so that it is not known what the server has of a file.
bool wasCutShort(const HttpAnswer& answer)
{
    constexpr long firstRedirection = 300;
    return !answer.isDone() && answer.status < firstRedirection;
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
    const HttpAnswer former = replace ? look(client, target, link) : HttpAnswer();
    if (!former.isDone())
        return {former.failure, {}};
    HttpRequest put = {"PUT", part};
    put.file = file.get();
    put.headers = {"Content-Type: application/octet-stream"};
    put.isCanceled = [&link] { return link.isCanceled.load(); };
    put.sent = [&link](std::int64_t sent) { link.done = sent; };
    HttpAnswer answer = client.run(put);
    bool mayComeBack = wasCutShort(answer);
    // Servers differ in what conditions they know for the target of a move, so it is asked for.
    if (answer.isDone() && replace)
    {
        const HttpAnswer now = look(client, target, link);
        answer.failure = now.failure;
        if (now.isDone() && now.tag != former.tag)
            answer.failure = fromUtf8(target.url()) +
                             u": another program has changed it meanwhile, so it stays as it is";
    }
    if (answer.isDone())
    {
        HttpRequest move = {"MOVE", part};
        move.headers = {"Destination: " + target.url(),
                        std::string("Overwrite: ") + (replace ? "T" : "F")};
        move.isCanceled = put.isCanceled;
        answer = client.run(move);
        mayComeBack = wasCutShort(answer);
    }
    if (answer.isDone())
    {
        PluginOutcome outcome;
        outcome.results.Add(boost::make_shared<DavEntry>(target, name, false, file->sizeAtOpen()));
        return outcome;
    }
    removePart(client, part, mayComeBack);
    return {answer.failure, {}};
}
} // namespace qo::host
