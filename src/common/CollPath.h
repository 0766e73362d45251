#pragma once

#include "types/StringArray.h"

/// The path of a file in any place: on a drive, in a network, on a device, in a plug-in, in a
/// share, or among search results. Its text is the key of the database and of the physical tree.
///
///   drive            C:\home\ann\Music\a.mp3         device "C:"
///   network          \\nas\music\a.mp3               device "\\nas"
///   usb              \\usb:1234-ABCD\Music\a.mp3     device "1234-ABCD", whatever its letter is
///   wpd              \\wpd:phone7\Music\a.mp3        a portable device, such as a phone
///   physicalPlugin   \\pplugin:cloud\Music\a.mp3     a plug-in with folders and files
///   logicalPlugin    \\lplugin:radio\Ann\Gold\Dawn   a plug-in with artists, albums and tracks
///   searchResult     \\sresult:web\tube::a1b2_0
///   share            \\share:17\C:\Music\a.mp3       the friend's path follows the share's id
///
/// In the last six forms '%' is written as "%%" and '\' in a name as "%1". A path that cannot be
/// parsed is an invalid path, which is not an error. Names are compared without regard to case; "."
/// and ".." have no special meaning.
class QO_API CQoCollPath
{
public:
    enum EDeviceType : int
    {
        invalid = 0,
        drive = 1,
        network = 2,
        usb = 3,
        wpd = 4,
        physicalPlugin = 5,
        logicalPlugin = 6,
        searchResult = 7,
        share = 8
    };

    CQoCollPath() = default;
    /// A relative path has components only, and the type invalid.
    explicit CQoCollPath(const CString& path, bool isRelative = false);
    CQoCollPath(EDeviceType type, const CString& device, const CStringArray& components = {});

    static CQoCollPath fromDriveLetter(char16_t letter, const CStringArray& components);
    /// A path in the share with that id; its first component is the device of the given path.
    static CQoCollPath makeShare(const CString& id, const CQoCollPath& path);
    /// The path of a track in a plug-in: artist, album and "title.ext", each " " if empty.
    static CQoCollPath makeTrack(const CQoCollPath& base,
                                 const CString& artist,
                                 const CString& album,
                                 const CString& title,
                                 const CString& ext);

    /// The type of the path, without parsing more of it than needed.
    static EDeviceType typeOf(const CString& path) { return typeOfText(path.view()); }
    static EDeviceType typeOfText(std::u16string_view path) noexcept;

    EDeviceType getType() const { return m_type; }
    bool isValid() const { return m_type > invalid; }
    bool isLocalDisk() const { return m_type >= drive && m_type <= usb; }
    bool isUSB() const { return m_type == usb; }
    bool isWPD() const { return m_type == wpd; }
    bool isPhysicalPlugin() const { return m_type == physicalPlugin; }
    bool isLogicalPlugin() const { return m_type == logicalPlugin; }
    bool isPlugin() const { return isPhysicalPlugin() || isLogicalPlugin(); }
    bool isShare() const { return m_type == share; }
    bool needsEscape() const { return m_type >= usb && m_type <= share; }

    const CString& getDevice() const { return m_device; }
    const CStringArray& getComponents() const { return m_components; }
    /// The text of the path; the root of a drive is "C:\". The argument has no effect here.
    CString toString(bool full = true) const;

    bool isEmpty() const { return m_components.IsEmpty(); }
    int getCount() const { return m_components.GetSize(); }
    CString getLast() const;
    /// The last component split at its last '.'; without a '.' the extension is "".
    CString getFileTitle() const;
    CString getFileExt() const;
    /// The path without its last component; a copy when there is none.
    CQoCollPath getParent() const;
    /// The component of that index; "" if there is none, or if it is a single blank.
    CString getComponent(int index) const;
    CString getFirst() const { return getComponent(0); }
    CString getSecond() const { return getComponent(1); }
    CString getThird() const { return getComponent(2); }

    bool isSameDevice(const CQoCollPath& other) const;
    /// Whether this path is below the other one, and not equal to it.
    bool isSubPathOf(const CQoCollPath& other) const;
    bool isSubPathOrSame(const CQoCollPath& other) const;
    bool isParentOrChildOf(const CQoCollPath& other) const;
    /// The components after those of the other path; none if this path is not below it.
    CStringArray relativeTo(const CQoCollPath& other) const;
    /// Splits into the first component and the rest, both as paths on the same device.
    void split(CQoCollPath& first, CQoCollPath& rest) const;
    CQoCollPath child(const CString& component) const;

    /// Negative, 0 or positive, by type, device, number of components, and then the components.
    /// This is not the order of the texts.
    int compare(const CQoCollPath& other) const;
    bool operator==(const CQoCollPath& other) const { return compare(other) == 0; }
    bool operator==(const CString& other) const { return compare(CQoCollPath(other)) == 0; }

private:
    bool parseDevice(const CString& text, int& start);
    void parseComponents(const CString& text, int start);
    int compareComponents(const CQoCollPath& other, int count) const;

    EDeviceType m_type = invalid;
    CString m_device;
    CStringArray m_components;
};

namespace qo
{
using CollPathArray = CArray<CQoCollPath>;

/// The index of the first equal path, or -1.
QO_API int findPath(const CollPathArray& paths, const CQoCollPath& path);
/// Adds the path unless an equal one is there.
QO_API void addUniquePath(CollPathArray& paths, const CQoCollPath& path);
QO_API void addPaths(CollPathArray& paths, const CStringArray& texts);
/// The texts with "," between them.
QO_API CString joinPaths(const CollPathArray& paths);
/// The paths that are only in the first list, and those only in the second, each sorted by text.
/// Callers pass the new list first.
QO_API void diffPathArrays(const CollPathArray& newPaths,
                           const CollPathArray& oldPaths,
                           CollPathArray& added,
                           CollPathArray& removed);
} // namespace qo
