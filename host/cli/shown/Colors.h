#pragma once

#include <string>
#include <string_view>

namespace qo::cli
{
/// What a text is, which decides on its colour.
enum class Style
{
    heading,
    mark, ///< a check mark that is set
    error,
    warning
};

enum class ColorMode
{
    automatic, ///< on a terminal that can, unless NO_COLOR is set
    always,
    never
};

/// For the whole program: what is written to standard output and to standard error goes by it.
void chooseColors(ColorMode mode);
/// The text in the colour of its style when the descriptor is to have colours, else as it stands.
/// Texts are made harmless, padded and cut before, since the codes would count as characters.
std::string painted(int descriptor, Style style, std::string_view text);
} // namespace qo::cli
