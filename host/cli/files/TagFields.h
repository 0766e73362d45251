#pragma once

#include "cli/files/FileRecord.h"
#include "core/collection/FileFields.h"
#include "core/collection/PendingTags.h"

#include <QoKernel/Tags.h>

#include <string>

namespace qo::cli
{
/// The field's value from a source as a person reads it: a picture as its path. False when the
/// source has none.
bool fieldValue(const CMusicTagEx& tag,
                const host::FileField& field,
                CTagAttrib::ESrcValueType source,
                std::string& value);

/// Gives the tag the pending values as edits.
void applyEdits(CMusicTagEx& tag, const host::PendingTags::Fields& edits);

/// The fields with the file's value and the edited one.
Json tagJson(const CMusicTagEx& tag);
/// The same as a table for people.
std::string tagTable(const CMusicTagEx& tag);
} // namespace qo::cli
