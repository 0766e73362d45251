#pragma once

#include "core/collection/FileFields.h"

#include <string>
#include <vector>

namespace qo::cli
{
/// The words of "qo tag set" and "qo tag revert": which fields, and the query for the files.
struct TagWords
{
    struct Value
    {
        const host::FileField* field;
        std::string value; ///< UTF-8; a picture as its absolute path
    };
    std::vector<Value> values;
    std::vector<std::string> query;

    /// "genre=Jazz" is a value unless there is a file of that name. Throws HostError for a field
    /// that there is not, and for a value that the field cannot have.
    static TagWords ofSet(const std::vector<std::string>& words);
    /// A word that is the name of a field is that field, without a value.
    static TagWords ofRevert(const std::vector<std::string>& words);
};
} // namespace qo::cli
