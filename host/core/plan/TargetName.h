#pragma once

#include <QoKernel/Inside.h>
#include <QoKernel/Kernel.h>

#include <string>

namespace qo::host
{
/// Names that a rule made, as the place they go to can hold them. Names are single components in
/// collection form.

/// A key that is equal for names, and for paths in collection form, that differ in case or in
/// Unicode form alone.
CString sameNameKey(const CString& name);
/// The same for absolute system paths.
std::string sameNameKey(const std::string& systemPath);

/// The text with "_" for each character that no name can be asked to hold: controls, half
/// surrogates and the characters by which collection paths write bytes; in composed form.
CString plainText(const CString& text);
/// The same for what may not make folders: "_" for separators of paths too, and no blanks around.
CString plainValue(CString text);

/// Makes the name of a folder valid and short enough: cut between two characters, without a blank
/// or point at the cut.
CString fittingFolderName(const CString& name, const VolumeRules& rules);
/// The same for a file; what stands after the last point is kept whole. "" when there is no room
/// for any other character.
CString fittingFileName(const CString& name, const VolumeRules& rules);

/// Nothing, or nothing but points: no name of anything.
bool isNoName(const CString& name);
} // namespace qo::host
