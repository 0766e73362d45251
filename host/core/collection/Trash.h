#pragma once

#include <cstdint>
#include <set>
#include <string>

namespace qo::host
{
/// The user's trash as desktops share it: a folder with "files", which holds what was thrown away,
/// and "info", which tells for each where it was and when it went. What lies on the file system of
/// the home folder goes to the home trash, anything else to a trash at the top of its own file
/// system, so that nothing is ever copied. Paths are absolute system paths. Not for several threads
/// at once.
class Trash
{
public:
    /// Where a thing goes in the trash.
    struct Item
    {
        std::string file;
        std::string note; ///< the file that tells where it was
        std::string text; ///< what the note says
    };

    /// The home trash, by default the one of this user: "Trash" below XDG_DATA_HOME, or below
    /// .local/share of the home folder. It may be a link to a folder that this user owns on the
    /// same file system.
    explicit Trash(std::string homeTrash = ofThisUser());
    /// One that finds places as the user's own does, but makes nothing: folders that are missing
    /// could be made, or placeFor() throws.
    static Trash onTrial();
    static std::string ofThisUser();
    const std::string& homeTrash() const { return m_homeTrash; }

    /// Finds a free place for a file, link or folder, which stays where it is: the caller writes
    /// the note first, since what has none cannot be found again. Makes the trash. Places that are
    /// taken already, by their notes, may be given. Throws HostError when there is no trash that
    /// can be trusted.
    Item placeFor(const std::string& path, const std::set<std::string>& takenNotes = {}) const;
    /// Moves it to such a place itself. Throws HostError, with the thing where it was.
    Item put(const std::string& path) const;
    /// Whether the path can be that of a thing in this trash, or in one at the top of a file
    /// system.
    bool canHold(const std::string& file) const;
    /// The note of a thing in the trash.
    static std::string noteOf(const std::string& file);

private:
    struct Place;

    /// The home trash itself, with the link followed that it may be.
    std::string homeFolderOn(std::uint64_t mount, const std::string& path) const;
    int needFolder(const std::string& folder) const;
    Place trashFor(const std::string& path) const;

    std::string m_homeTrash;
    bool m_isTrial = false;
};
} // namespace qo::host
