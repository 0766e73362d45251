#pragma once

#include "Physical/HDMusicFile.h"

namespace qo
{
/// Before the record of a file changes or goes on without it: whoever still has the file goes on
/// seeing the tag that it had. Null is allowed.
inline void keepTag(const boost::shared_ptr<CHDFile>& file)
{
    if (file && file->getFileType() == CHDFile::FT_Music)
        static_cast<CHDMusicFile&>(*file).getTag().keepTexts();
}
} // namespace qo
