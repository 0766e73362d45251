#pragma once

#include <QoKernel/Kernel.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qo::host
{
/// Which names below the root folders are no part of a collection. Two sources, of which the later
/// one has the last word: a list of names that holds everywhere (see defaultNames()), and the files
/// ".qoignore" in folders, with the patterns of ".gitignore". Such a file counts for its folder and
/// all below it; within it the last pattern that fits decides.
///
/// Example: with the names "*.part" everywhere and a file /music/live/.qoignore that says
///     bootlegs/
///     !good.part
/// the folder /music/live/1999/bootlegs and the file /music/a.part are left out, while the file
/// /music/live/1999/good.part is taken in.
///
/// Paths are in collection form. Not for several threads at once.
class IgnoreRules
{
public:
    static constexpr const char16_t* fileName = u".qoignore";
    /// What a collection leaves out unless its user wants otherwise; parts are separated by ";".
    static constexpr const char16_t* defaultNames =
        u".*;$RECYCLE.BIN;System Volume Information;@eaDir;lost+found;Thumbs.db;desktop.ini;"
        u"*.part;*.crdownload;*.tmp";

    /// Names or patterns, separated by ";".
    explicit IgnoreRules(const CString& names);

    /// Takes in the content of a folder's own file, or forgets the folder's rules when it is empty.
    void setFile(const CString& folder, std::string_view content);
    /// Whether a file or folder of that name in the folder is left out. The folder itself is taken
    /// to be part of the collection.
    bool isLeftOut(const CString& folder, const CString& name, bool isFolder) const;

private:
    struct Pattern
    {
        enum class Form
        {
            exact,      ///< the whole name
            startsWith, ///< "text*"
            endsWith,   ///< "*text"
            general     ///< anything else, over several names
        };
        Form form = Form::general;
        CString text;                   ///< of a simple form
        std::vector<std::string> parts; ///< of a general one: a pattern for each name of the path
        bool isNegated = false;
        bool isForFolders = false;
    };
    struct Folder
    {
        CString path; ///< with closing backslash
        std::vector<Pattern> patterns;
    };

    static bool parse(std::string line, Pattern& pattern);
    static bool parseName(const CString& name, Pattern& pattern);
    static bool fitsName(const Pattern& pattern, const CString& name);
    static bool fitsPath(const Pattern& pattern,
                         const CString& base,
                         const CString& folder,
                         const CString& name);

    std::vector<Pattern> m_everywhere;
    std::vector<Folder> m_folders; ///< those above others come first
};
} // namespace qo::host
