#pragma once

#include "core/base/HostError.h"

#include <gtest/gtest.h>

#include <string>

/// The sentence with which the action fails, and that its exit code is this one.
template <class Action>
std::string messageOf(Action&& action, qo::host::ExitCode code = qo::host::ExitCode::failed)
{
    try
    {
        action();
    }
    catch (const qo::host::HostError& error)
    {
        EXPECT_EQ(error.code(), code) << error.what();
        return error.what();
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}
