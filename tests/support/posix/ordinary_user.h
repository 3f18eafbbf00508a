// A process that is not the superuser for a while: the superuser may look and write everywhere.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

namespace korvex::tests {

/// The process acts as an ordinary user for as long as the object lives. Declare it behind what must be
/// cleaned up by the process's own user.
class OrdinaryUser {
public:
    OrdinaryUser() : wasRoot_(::geteuid() == 0) {
        if (wasRoot_) becomes(nobody);
    }
    ~OrdinaryUser() {
        if (wasRoot_) becomes(0);
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    static constexpr ::uid_t nobody = 65534;

    static void becomes(::uid_t user) { EXPECT_EQ(::seteuid(user), 0); }

    const bool wasRoot_;
};

}  // namespace korvex::tests
