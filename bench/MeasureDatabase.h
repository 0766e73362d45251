#pragma once

#include "common/SimpleLogger.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Kernel.h>

#include <cstdio>
#include <memory>

/// The frame of a benchmark that takes a database and a second path: sets the process up as the
/// command does, with a log of what fails instead of every statement, and runs the function with
/// both paths in collection form. The exit code of the process.
template <class Measure>
int measureDatabase(int argc, char** argv, Measure measure)
try
{
    if (argc != 3)
        return 2;
    const CString second = qo::fromSystemPath(argv[2]);
    InitSimpleLogger(qo::level::error, second + u"_log");
    return measure(qo::fromSystemPath(argv[1]), second);
}
catch (CSQLiteException* caught)
{
    const std::unique_ptr<CSQLiteException> exception(caught);
    std::fprintf(stderr, "%s\n", qo::toUtf8(exception->message()).c_str());
    return 1;
}
