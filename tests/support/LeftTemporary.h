#pragma once

#include "platform/TemporaryNames.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>
#include <string>

/// The name of a temporary file beside the target that a process made which runs no longer.
inline std::string leftTemporaryBeside(const std::string& target)
{
    const pid_t dead = ::fork();
    if (dead == 0)
        ::_exit(0);
    EXPECT_EQ(::waitpid(dead, nullptr, 0), dead);
    // ".qo-tmp-MACHINE-PROCESS-XXXXXX"
    const std::string own = std::filesystem::path(qo::temporaryBeside(target)).filename();
    const std::size_t process = own.find('-', std::string(".qo-tmp-").size()) + 1;
    std::ostringstream number;
    number << std::hex << dead;
    const std::string name = own.substr(0, process) + number.str() + "-abcdef";
    EXPECT_TRUE(qo::isTemporaryName(name));
    return name;
}
