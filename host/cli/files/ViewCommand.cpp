#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/view/Marks.h"
#include "core/view/PaneModel.h"

#include <QoKernel/Logical.h>
#include <QoKernel/Physical.h>

#include <sstream>

namespace qo::cli
{
namespace
{
using host::PaneModel;
using Show = CQoUtils::ShowFilterInfo;

struct ViewOptions
{
    std::string left = "artists";
    std::string right = "files";
    std::string select;
    std::string middle;
    std::string filter;
    std::string field = "all";
    std::vector<std::string> shown;
    std::vector<std::string> hidden;
};

struct Name
{
    const char* name;
    int value;
};

constexpr Name leftViews[] = {{"artists", CUVViewHelper::leftArtists},
                              {"genre-artists", CUVViewHelper::leftGenreArtists},
                              {"genres", CUVViewHelper::leftGenres},
                              {"folders", CUVViewHelper::leftDirs}};
constexpr Name rightViews[] = {{"files", CUVViewHelper::rightFiles},
                               {"tree", CUVViewHelper::rightTree}};
constexpr Name filterFields[] = {{"all", CQoCollSubset::filterAll},
                                 {"artist", CQoCollSubset::filterArtist},
                                 {"album", CQoCollSubset::filterAlbum},
                                 {"track", CQoCollSubset::filterTrack}};
constexpr int own = 1 << 20;
constexpr int foreign = 1 << 21;
constexpr Name kinds[] = {{"audio", Show::ST_Audio},
                          {"video", Show::ST_Video},
                          {"other", Show::ST_NoMedia},
                          {"gathered", Show::ST_Velmora},
                          {"found", Show::ST_MyMusic},
                          {"music", Show::ST_Music},
                          {"no-music", Show::ST_NoMusic},
                          {"reviewed", Show::ST_Reviewed},
                          {"not-reviewed", Show::ST_NotReviewed},
                          {"imported", Show::ST_Imported},
                          {"not-imported", Show::ST_NotImported},
                          {"purchased", Show::ST_Purchased},
                          {"not-purchased", Show::ST_NotPurchased},
                          {"own", own},
                          {"foreign", foreign}};
/// The kinds that exclude each other: a file has one of each group.
constexpr int groups[] = {Show::ST_Audio | Show::ST_Video | Show::ST_NoMedia,
                          Show::ST_Velmora | Show::ST_MyMusic,
                          Show::ST_Music | Show::ST_NoMusic,
                          Show::ST_Reviewed | Show::ST_NotReviewed,
                          Show::ST_Imported | Show::ST_NotImported,
                          Show::ST_Purchased | Show::ST_NotPurchased,
                          own | foreign};

std::string namesOf(std::span<const Name> names)
{
    std::string list;
    for (const Name& each : names)
        list += (list.empty() ? "" : ", ") + std::string(each.name);
    return list;
}

int valueOf(std::span<const Name> names, const std::string& typed, const char* option)
{
    for (const Name& each : names)
    {
        if (each.name == typed)
            return each.value;
    }
    throw HostError(ExitCode::usage,
                    std::string(option) + " does not know \"" + typed + "\"; there are " +
                        namesOf(names));
}

int maskOf(const std::vector<std::string>& lists, const char* option)
{
    int mask = 0;
    for (const std::string& list : lists)
    {
        std::istringstream parts(list);
        for (std::string name; std::getline(parts, name, ',');)
            mask |= valueOf(kinds, name, option);
    }
    return mask;
}

/// A file is shown when it has one of the wanted kinds. What is hidden leaves the other kinds of
/// its group.
Show shownKinds(const ViewOptions& options)
{
    const int shown = maskOf(options.shown, "--show");
    const int hidden = maskOf(options.hidden, "--hide");
    int wanted = shown & ~hidden;
    for (const int group : groups)
    {
        if ((hidden & group) != 0 && (shown & group) == 0)
            wanted |= group & ~hidden;
    }
    Show result;
    const bool areBoth = ((shown | hidden) & (own | foreign)) == 0;
    result.m_showOwn = areBoth || (wanted & own) != 0;
    result.m_showForeign = areBoth || (wanted & foreign) != 0;
    const int types = wanted & Show::showAll;
    result.m_showTypes =
        types == 0 && ((shown | hidden) & Show::showAll) == 0 ? Show::showAll : types;
    return result;
}

const char* kindOf(const CUVViewItem& item)
{
    return item.isGenre()    ? "genre"
           : item.isArtist() ? "artist"
           : item.isAlbum()  ? "album"
           : item.isDir()    ? "folder"
                             : "file";
}

std::string nameOf(const CUVViewItem& item)
{
    const auto dir = boost::dynamic_pointer_cast<CHDDirectory>(item.getLinkObj());
    // A root folder stands alone, so that its name alone says too little.
    return dir && !item.getParent() && !dir->getParentDir()
               ? host::shownPath(dir->getPath().toString())
               : oneLine(item.getName());
}

/// The year of an album and the number of a track, by which they are ordered; "" for others.
CString placeOf(const CUVViewItem& item)
{
    if (const auto file = CUVUtils::getItemMusicFile(&item))
        return file->getDbItem()->trackNumber;
    const auto album = boost::dynamic_pointer_cast<CLTAlbum>(item.getLinkObj());
    const int year = album ? CQoUtils::getAlbumYear(album) : 0;
    return year > 0 ? fromUtf8(std::to_string(year)) : CString();
}

Json itemJson(const CUVViewItem& item)
{
    Json object;
    object["kind"] = kindOf(item);
    object["name"] = nameOf(item);
    object["group"] = item.isGroup();
    object["own"] = item.getOwnFileCount();
    object["foreign"] = item.getForeignFileCount();
    object["mark"] = item.getCheckState() == CQoCheckState::CS_Checked ? "all"
                     : item.getCheckState() == CQoCheckState::CS_Mixed ? "some"
                                                                       : "none";
    if (item.isAlbum() || item.isFile())
        object[item.isAlbum() ? "year" : "track"] = toUtf8(placeOf(item));
    if (const auto file = CUVUtils::getItemFile(&item))
        putPath(object, "path", file->getPath());
    object["items"] = Json::array();
    for (const CUVViewItem* const each : PaneModel::shownBelow(item))
        object["items"].push_back(itemJson(*each));
    return object;
}

/// How many files stand below an item. Of a file, whether it is a foreign one.
std::string countOf(const CUVViewItem& item)
{
    if (item.isFile())
        return item.getForeignFileCount() > 0 ? "  (foreign)" : "";
    return "  (" + std::to_string(item.getOwnFileCount()) +
           (item.getForeignFileCount() > 0
                ? " own, " + std::to_string(item.getForeignFileCount()) + " foreign)"
                : ")");
}

/// One pane as lines: mark, indented name with year or number, and how many files.
void printItems(CommandLine& line,
                const CUVViewItemList& items,
                const CUVViewItem* selected,
                int depth = 0)
{
    for (const CUVViewItem* const item : items)
    {
        if (line.out.isClosed())
            return;
        const auto state = item->getCheckState();
        const std::string mark = state == CQoCheckState::CS_Checked ? "[x]"
                                 : state == CQoCheckState::CS_Mixed ? "[-]"
                                                                    : "[ ]";
        const std::string start = std::string(item == selected ? "> " : "  ") +
                                  std::string(static_cast<std::size_t>(2 * depth), ' ');
        const std::string place = oneLine(placeOf(*item));
        const std::string ahead = place.empty() ? " " : " " + place + "  ";
        const std::string count = countOf(*item);
        const std::size_t taken = start.size() + mark.size() + textWidth(ahead) + textWidth(count);
        std::string text = start;
        text += mark == "[ ]" ? mark : Output::styled(Style::mark, mark);
        text += ahead;
        text += line.out.fitted(nameOf(*item), taken);
        text += count;
        line.out.line(text);
        printItems(line, PaneModel::shownBelow(*item), selected, depth + 1);
    }
}

CUVViewItem* find(const CUVViewItemList& items, const std::string& path, const char* pane)
{
    CUVViewItem* const item = PaneModel::find(items, path);
    if (!item)
        throw HostError(ExitCode::notFound,
                        std::string("the ") + pane + " pane has no \"" + path + "\"");
    return item;
}

void print(CommandLine& line, const PaneModel& panes)
{
    struct Pane
    {
        const char* name;
        const CUVViewItemList& items;
        const CUVViewItem* selected;
    };
    const Pane all[] = {{"left", panes.left(), panes.selectedLeft()},
                        {"middle", panes.middle(), panes.selectedMiddle()},
                        {"right", panes.right(), nullptr}};
    if (line.json)
    {
        Json object;
        for (const Pane& pane : all)
        {
            object[pane.name] = Json::array();
            for (const CUVViewItem* const item : pane.items)
                object[pane.name].push_back(itemJson(*item));
        }
        return line.out.line(dump(object));
    }
    bool isFirst = true;
    for (const Pane& pane : all)
    {
        if (pane.items.IsEmpty())
            continue;
        line.out.line((isFirst ? "" : "\n") + Output::styled(Style::heading, pane.name));
        isFirst = false;
        printItems(line, pane.items, pane.selected);
    }
}

void view(CommandLine& line, const ViewOptions& options)
{
    PaneModel::Filter filter;
    filter.text = fromUtf8(options.filter);
    filter.field =
        static_cast<CQoCollSubset::EFilterType>(valueOf(filterFields, options.field, "--field"));
    filter.shown = shownKinds(options);
    host::applyMarks();
    PaneModel panes(static_cast<PaneModel::View>(valueOf(leftViews, options.left, "--left")),
                    static_cast<PaneModel::View>(valueOf(rightViews, options.right, "--right")),
                    filter);
    if (!options.select.empty())
        panes.selectLeft(find(panes.left(), options.select, "left"));
    if (!options.middle.empty())
        panes.selectMiddle(find(panes.middle(), options.middle, "middle"));
    print(line, panes);
}
} // namespace

void setUpView(CommandLine& line, CLI::App& command)
{
    const auto options = std::make_shared<ViewOptions>();
    line.setListAction(command,
                       [&line, options]
                       {
                           const auto session = openKernel(line, KernelUse::look);
                           loadForReading(line, *session, PlaceUse::beside);
                           session->kernel().run([&] { view(line, *options); });
                           return ExitCode::done;
                       });
    addArgument(command, "--left", options->left, "The left pane: " + namesOf(leftViews))
        ->type_name("PANE");
    addArgument(command, "--select", options->select, "What is selected there, as \"Pop/ABBA\"")
        ->type_name("NAMES");
    addArgument(command, "--middle", options->middle, "What is selected in the middle pane")
        ->type_name("NAMES");
    addArgument(command, "--right", options->right, "The right pane: " + namesOf(rightViews))
        ->type_name("PANE");
    addArgument(command, "--filter", options->filter, "Only files with a word that begins so")
        ->type_name("TEXT");
    addArgument(
        command, "--field", options->field, "Where the word stands: " + namesOf(filterFields))
        ->type_name("FIELD");
    addArguments(command, "--show", options->shown, "Only files of one of these kinds: audio,own")
        ->type_name("KIND,...");
    addArguments(command, "--hide", options->hidden, "All but these kinds")->type_name("KIND,...");
    addPlaceOption(line, command, PlaceUse::beside);
    command.footer("Kinds: " + namesOf(kinds));
}
} // namespace qo::cli
