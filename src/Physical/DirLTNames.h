#pragma once

#include "types/StringArray.h"

/// The distinct titles, albums and artists of a directory's music files, in the order of adding.
/// Names that differ in case alone are one name; the first spelling stays. Adding compares with
/// every name that is there, which is meant for the few names of one directory.
class QO_API CDirLTNames
{
public:
    void addTitle(const CString& name) { addName(m_titles, name); }
    void addAlbum(const CString& name) { addName(m_albums, name); }
    void addArtist(const CString& name) { addName(m_artists, name); }

    CStringArray m_titles;
    CStringArray m_albums;
    CStringArray m_artists;

private:
    static void addName(CStringArray& names, const CString& name);
};
