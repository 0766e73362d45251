#pragma once

#include <cstdint>
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
    /// One thing in the trash.
    struct Item
    {
        std::string original;
        std::string file; ///< where it lies now
        std::string info;
    };

    /// The home trash, by default the one of this user: "Trash" below XDG_DATA_HOME, or below
    /// .local/share of the home folder. It may be a link to a folder that this user owns on the
    /// same file system.
    explicit Trash(std::string homeTrash = ofThisUser());
    static std::string ofThisUser();
    const std::string& homeTrash() const { return m_homeTrash; }

    /// Moves a file, link or folder there. A failure throws HostError and leaves it where it is:
    /// nothing is deleted in place of throwing it away.
    Item put(const std::string& path) const;
    /// Moves it back where it was, unless something else is there; the error number, 0 for success.
    static int putBack(const Item& item);

private:
    struct Place;

    /// The home trash itself, behind the link that it may be.
    std::string homeFolderOn(std::uint64_t mount, const std::string& path) const;
    Place placeFor(const std::string& path) const;

    std::string m_homeTrash;
};
} // namespace qo::host
