#pragma once

/// A position in a CList or CMap; null is no position. It is valid until its element is removed.
struct PositionTag;
using POSITION = PositionTag*;
