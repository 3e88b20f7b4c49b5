// Helpers shared by the platform tests: a temporary file name, exception causes.
#pragma once

#include "platform/afx.h"

#include <gtest/gtest.h>

#include <string>
#include <unistd.h>
#include <vector>

// A file name in the test temporary directory, removed again when the test ends.
struct TempPath {
    std::string m_path = ::testing::TempDir() + "femmat_platform_" + std::to_string(getpid());
    ~TempPath() { unlink(m_path.c_str()); }
    const char *c_str() const { return m_path.c_str(); }
};

// The cause of the CArchiveException that f throws, or -1 when it throws none.
template <class F> int ArchiveCause(F f) {
    try {
        f();
    } catch (CArchiveException &e) {
        return e.m_cause;
    }
    return -1;
}
