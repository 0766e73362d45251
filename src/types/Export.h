#pragma once

/// Exports a class or function from the shared library; everything else stays hidden.
#define QO_API __attribute__((visibility("default")))
