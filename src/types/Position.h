#pragma once

/// A place in a CList or CMap; null is no place. It is good until its element is removed.
struct PositionTag;
using POSITION = PositionTag*;
