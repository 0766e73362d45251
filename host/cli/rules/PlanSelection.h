#pragma once

#include "cli/files/FileChoice.h"

#include <QoKernel/Collection.h>

#include <string>

namespace qo::cli
{
/// Which files of the collection a plan is about: those that a query chooses, with the pictures and
/// texts that lie beside chosen music and belong to nothing else.
struct PlanSelection
{
    std::string root; ///< only what lies below it; "" for all
    FileChoice choice;

    /// In the collection's order. Throws HostError when nothing is left. On the kernel's thread.
    QoFileDbItemArray records() const;
};
} // namespace qo::cli
