#pragma once

#include "types/StringArray.h"

/// The path of a file anywhere: on a drive, in the network, on a device, behind a plug-in, in a
/// share or among search results. The string form is the key of the database and of the physical
/// tree; types 3 to 8 escape their device id and components ('%' as "%%", '\' as "%1"). A path that
/// cannot be parsed is an invalid path, which is no error. Names compare without regard to case;
/// the components "." and ".." mean nothing special.
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
    /// A relative path has components only, and type 0.
    explicit CQoCollPath(const CString& path, bool isRelative = false);
    CQoCollPath(EDeviceType type, const CString& device, const CStringArray& components = {});

    static CQoCollPath fromDriveLetter(char16_t letter, const CStringArray& components);
    /// A path of the share with that id; the first component is the path's device.
    static CQoCollPath makeShare(const CString& id, const CQoCollPath& path);
    /// The track's path behind a plug-in: artist, album and "title.ext", each " " when empty.
    static CQoCollPath makeTrack(const CQoCollPath& base,
                                 const CString& artist,
                                 const CString& album,
                                 const CString& title,
                                 const CString& ext);

    /// The type that the string would parse to, without parsing the rest of it.
    static EDeviceType typeOf(const CString& path);

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
    /// A drive root prints as "C:\". The flag is there for the object protocol and changes nothing.
    CString toString(bool full = true) const;

    bool isEmpty() const { return m_components.IsEmpty(); }
    int getCount() const { return m_components.GetSize(); }
    CString getLast() const;
    /// The last component split at its last '.'; no '.' means an empty extension.
    CString getFileTitle() const;
    CString getFileExt() const;
    /// The same device with one component less; a copy when there is none.
    CQoCollPath getParent() const;
    /// Empty when there is no such component or it is a single blank.
    CString getComponent(int index) const;
    CString getFirst() const { return getComponent(0); }
    CString getSecond() const { return getComponent(1); }
    CString getThird() const { return getComponent(2); }

    bool isSameDevice(const CQoCollPath& other) const;
    /// Strictly below the other.
    bool isSubPathOf(const CQoCollPath& other) const;
    bool isSubPathOrSame(const CQoCollPath& other) const;
    bool isParentOrChildOf(const CQoCollPath& other) const;
    /// The components behind the other's; empty when this path is not strictly below it.
    CStringArray relativeTo(const CQoCollPath& other) const;
    /// The first component and the rest, each as a path on the same device.
    void split(CQoCollPath& first, CQoCollPath& rest) const;
    CQoCollPath child(const CString& component) const;

    /// By type, device, number of components and then the components: not the order of the strings.
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

/// Index of the first equal path or -1.
QO_API int findPath(const CollPathArray& paths, const CQoCollPath& path);
QO_API void addUniquePath(CollPathArray& paths, const CQoCollPath& path);
QO_API void addPaths(CollPathArray& paths, const CStringArray& texts);
/// The string forms with "," between them.
QO_API CString joinPaths(const CollPathArray& paths);
/// What stands only in the first list, and only in the second, each sorted by its text; callers
/// pass the new list first.
QO_API void diffPathArrays(const CollPathArray& newPaths,
                           const CollPathArray& oldPaths,
                           CollPathArray& added,
                           CollPathArray& removed);
} // namespace qo
