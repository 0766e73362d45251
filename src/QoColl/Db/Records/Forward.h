#pragma once

#include "types/Array.h"

#include <boost/smart_ptr/shared_ptr.hpp>

class CAcParamsUtils;
class CFpParamsUtils;
class CVelmoraFileParamsUtils;
struct AcStreamDbItem;
struct AcStreamTrackDbItem;
struct CollInfoDbItem;
struct FpCutInfoDbItem;
struct QoFileDbItem;
struct QoInplaceFileDbItem;
struct QoPlaylistDbItem;
struct QoSessionDbItem;
struct QoSessionQueryItem;
struct QoShareDbItem;

namespace QorganizerDef
{
struct VelmoraFileParams;
}

namespace AudioCutterCore
{
struct ACTrackStorage;
}

namespace Fingerprint
{
struct FingerprintCutInformation;
}

using QoFileDbItemPtr = boost::shared_ptr<QoFileDbItem>;
using QoFileDbItemArray = CArray<QoFileDbItemPtr>;
template <class T>
using DbItemArray = CArray<boost::shared_ptr<T>>;
using AcStreamArray = CArray<AcStreamDbItem>;
using AcStreamTrackArray = CArray<AcStreamTrackDbItem>;
