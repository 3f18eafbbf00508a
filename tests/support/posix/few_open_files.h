// A process that may open few files for a while.
#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace korvex::tests {

/// Lets the process have only so many open files for as long as the object lives.
class FewOpenFiles {
public:
    explicit FewOpenFiles(::rlim_t most) {
        ::getrlimit(RLIMIT_NOFILE, &earlier_);
        const struct ::rlimit few { most, earlier_.rlim_max };
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    }
    ~FewOpenFiles() { ::setrlimit(RLIMIT_NOFILE, &earlier_); }
    FewOpenFiles(const FewOpenFiles&) = delete;
    FewOpenFiles& operator=(const FewOpenFiles&) = delete;

private:
    struct ::rlimit earlier_ {};
};

}  // namespace korvex::tests
