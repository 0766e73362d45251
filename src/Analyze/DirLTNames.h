#pragma once

#include "types/StringArray.h"

/// The distinct names of a directory's music files, in the order of adding. Names are the same
/// without regard to case; the first spelling stays.
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
