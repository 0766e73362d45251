#pragma once

#include <QoKernel/Collection.h>

#include <vector>

namespace qo::host
{
class HeadStore;
class RootLister;
class Session;

/// A file that was moved or renamed without qo, with its record.
struct MoveOffer
{
    CString from;
    CString to;
    CString velmoraId;
};

/// A file that may be any of several. A scan takes it for gone and the candidates for new files.
struct UnclearMove
{
    CString from;
    std::vector<CString> candidates; ///< the first ten, which no other record has
};

struct MovedFiles
{
    std::vector<MoveOffer> offers;
    std::vector<UnclearMove> unclear;
    int vanished = 0; ///< records whose file is gone
    int unknown = 0;  ///< files without a record
};

/// Compares the loaded collection with the root folders and pairs records whose file is gone with
/// files that have no record. Both must have the same size. If the store knows the head of the lost
/// file, the found file must have the same head. If it does not, a sound file must have the same
/// duration and bitrate, and either the same write time or the same title, artist, album and track;
/// any other file must have the same write time and name. Where several fit, MovedTwins decides if
/// it can; no file is offered twice. Changes nothing. Throws HostError when the progress stopped
/// it. For the kernel's thread.
MovedFiles findMoved(const HeadStore& heads, RootLister& lister, IQoProgress& progress);

/// Gives the records their new paths and saves that; a scan afterwards finds the rest. Throws
/// HostError, see CollectionChanges::apply(). For the kernel's thread.
void applyMoves(Session& session, const std::vector<MoveOffer>& offers, IQoProgress& progress);
} // namespace qo::host
