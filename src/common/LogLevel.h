#pragma once

/// The levels of log lines. A logger writes lines up to its own level; level 0 writes nothing.
namespace qo::level
{
constexpr int none = 0;
constexpr int error = 10;
constexpr int warning = 20;
constexpr int timing = 30;
constexpr int flow = 40;
constexpr int step = 50;
constexpr int detail = 60;
} // namespace qo::level
