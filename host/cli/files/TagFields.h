#pragma once

#include "cli/files/FileRecord.h"
#include "core/collection/FileFields.h"
#include "core/collection/PendingTags.h"

#include <QoKernel/Tags.h>

#include <optional>
#include <string>
#include <vector>

namespace qo::cli
{
/// The field's value from a source as a person reads it: a picture as its path. False when the
/// source has none.
bool fieldValue(const CMusicTagEx& tag,
                const host::FileField& field,
                CTagAttrib::ESrcValueType source,
                std::string& value);

/// Throws HostError unless it is a file of a format with tags.
void checkMusicFile(const CString& path);
/// Reads the tag of such a file. Throws HostError.
void readFileTag(const CString& path, CMusicTagEx& tag);
void readFileTag(const CString& path, KVTagLib::CTags& tags);
/// The absolute path of a picture that was typed. Throws HostError unless it is one that can stand
/// in a tag.
std::string checkedPicture(const std::string& typed);

/// Gives the tag the pending values as edits.
void applyEdits(CMusicTagEx& tag, const host::PendingTags::Fields& edits);

/// The field of the tag library; nothing for a picture.
std::optional<KVTagLib::Field> fieldInTag(const host::FileField& field);
/// Every value of the file's tag, whole: a CMusicTagEx has one value a field, and cuts long ones as
/// the collection does.
KVTagLib::CTags allValues(const CString& path);
/// The file's values of a field, the one that the tag has first; empty without any.
std::vector<std::string>
fileValues(const CMusicTagEx& tag, const KVTagLib::CTags& all, const host::FileField& field);

/// The fields with the file's first value, all of several ("values"), and the edited one.
Json tagJson(const CMusicTagEx& tag, const KVTagLib::CTags& all);
/// The same as a table for people, each of several values on a line of its own.
std::string tagTable(const CMusicTagEx& tag, const KVTagLib::CTags& all);
} // namespace qo::cli
