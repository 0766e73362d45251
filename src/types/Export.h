#pragma once

/// Marks what the shared library shows to its users; everything else stays hidden.
#define QO_API __attribute__((visibility("default")))
