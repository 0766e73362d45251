#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/query/CollectionPath.h"

#include <QoKernel/Physical.h>

namespace qo::cli
{
namespace
{
struct TreeOptions
{
    std::string path;
    bool foldersOnly = false;
    int depth = 0; ///< 0: no limit
};

using Dir = boost::shared_ptr<CHDDirectory>;

std::string lastNameOf(const CString& path)
{
    const std::string system = host::shownPath(path);
    return system.substr(system.rfind('/') + 1);
}

/// Draws folders without a call for each level: a tree may be deeper than the stack is long.
class TreePrinter
{
public:
    TreePrinter(CommandLine& line, const TreeOptions& options) : m_line(line), m_options(options) {}

    void print(const Dir& top)
    {
        printName(host::shownPath(top->getPath().toString()), countOf(top));
        m_open.push_back({top, 0});
        while (!m_open.empty() && !m_line.out.isClosed())
            printNext();
    }

private:
    struct Level
    {
        Dir dir;
        int next; ///< sub-folders first, then files
    };

    static std::string countOf(const Dir& dir)
    {
        return "  (" + countText(dir->getRecFileCount(), "file") + ")";
    }

    int entriesOf(const Dir& dir) const
    {
        return dir->getSubDirs().GetSize() +
               (m_options.foldersOnly ? 0 : dir->getFiles().GetSize());
    }

    void printName(const std::string& name, const std::string& count, const std::string& lines = {})
    {
        m_line.out.line(lines + m_line.out.fitted(name, textWidth(lines) + count.size()) + count);
    }

    void printNext()
    {
        Level& level = m_open.back();
        const int index = level.next++;
        if (index >= entriesOf(level.dir))
            return m_open.pop_back();
        std::string text;
        for (std::size_t i = 0; i + 1 < m_open.size(); ++i)
            text += m_open[i].next < entriesOf(m_open[i].dir) ? "│   " : "    ";
        text += level.next < entriesOf(level.dir) ? "├── " : "└── ";
        const int folders = level.dir->getSubDirs().GetSize();
        if (index >= folders)
            return printName(
                lastNameOf(level.dir->getFiles()[index - folders]->getPath()), "", text);
        const Dir sub = level.dir->getSubDirs()[index];
        printName(lastNameOf(sub->getPath().toString()), countOf(sub), text);
        if (m_options.depth == 0 || static_cast<int>(m_open.size()) < m_options.depth)
            m_open.push_back({sub, 0});
    }

    CommandLine& m_line;
    const TreeOptions& m_options;
    std::vector<Level> m_open;
};

/// One object for each folder, from the top down.
void printJson(CommandLine& line, const Dir& top)
{
    std::vector<Dir> waiting{top};
    while (!waiting.empty() && !line.out.isClosed())
    {
        const Dir dir = waiting.back();
        waiting.pop_back();
        Json object;
        putPath(object, "path", dir->getPath().toString());
        object["folders"] = dir->getSubDirs().GetSize();
        object["files"] = dir->getFiles().GetSize();
        object["filesBelow"] = dir->getRecFileCount();
        line.out.line(dump(object));
        for (int i = dir->getSubDirs().GetSize() - 1; i >= 0; --i)
            waiting.push_back(dir->getSubDirs()[i]);
    }
}

/// A friend's first drive is shown as his share, so it stands for that.
Dir shownTop(const Dir& root)
{
    const bool isDrive = root->getFiles().IsEmpty() && root->getSubDirs().GetSize() == 1 &&
                         host::shownPath(root->getSubDirs()[0]->getPath().toString()) ==
                             host::shownPath(root->getPath().toString());
    return isDrive ? root->getSubDirs()[0] : root;
}

std::vector<Dir> findTops(const std::string& typed)
{
    const CQoCollection& collection = CQoCollection::m_ownCollection;
    std::vector<Dir> tops;
    if (typed.empty())
    {
        for (const Dir& root : collection.getRootDirs())
            tops.push_back(shownTop(root));
        return tops;
    }
    const auto path = host::pathInCollection(typed);
    if (const Dir dir = path ? collection.getDir(*path) : Dir())
        return {dir};
    throw HostError(ExitCode::notFound, typed + " is no folder of the collection");
}

ExitCode tree(CommandLine& line, const TreeOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    loadForReading(line, *session);
    session->kernel().run(
        [&]
        {
            for (const Dir& top : findTops(options.path))
            {
                if (line.json)
                    printJson(line, top);
                else
                    TreePrinter(line, options).print(top);
            }
        });
    return ExitCode::done;
}
} // namespace

void setUpTree(CommandLine& line, CLI::App& command)
{
    auto options = std::make_shared<TreeOptions>();
    line.setListAction(command, [&line, options] { return tree(line, *options); });
    addArgument(command, "PATH", options->path, "Only this folder");
    addPlaceOption(line, command);
    command.add_flag("-d,--folders", options->foldersOnly, "Folders only");
    command.add_option("--depth", options->depth, "That many levels")
        ->type_name("N")
        ->check(CLI::PositiveNumber);
}
} // namespace qo::cli
