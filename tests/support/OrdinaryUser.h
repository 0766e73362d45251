#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

/// Lets the administrator feel what permissions are: while it lives, the folder and all in it are
/// another user's, and so is the process.
class OrdinaryUser
{
public:
    explicit OrdinaryUser(const std::string& folder)
    {
        constexpr uid_t nobody = 65534;
        if (::geteuid() != 0)
            return;
        bool isGiven = ::lchown(folder.c_str(), nobody, nobody) == 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
            isGiven = ::lchown(entry.path().c_str(), nobody, nobody) == 0 && isGiven;
        // The saved user stays, as the way back. The real one changes too: a program that is
        // started now is wholly another user's.
        m_isChanged = ::setresuid(nobody, nobody, 0) == 0;
        isPossible = isGiven && m_isChanged && ::access(folder.c_str(), R_OK) == 0;
    }
    ~OrdinaryUser()
    {
        if (m_isChanged && ::setresuid(0, 0, 0) != 0)
            ADD_FAILURE() << "still another user";
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

    bool isPossible = true;

private:
    bool m_isChanged = false;
};
