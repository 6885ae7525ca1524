// A scripted file system under zel_fio, for tests that count its calls or need results that no real one gives
// on demand. It distinguishes case.
#ifndef TESTS_SUPPORT_FIO_OS_FAKE_H
#define TESTS_SUPPORT_FIO_OS_FAKE_H

#include <map>
#include <string>
#include <vector>

struct FIO_FAKE
{
    /// The entries that exist: paths as they are passed, directories without a slash at the end; whether each is a
    /// directory.
    std::map<std::string, bool> entries;
    std::string current_directory = "/current";
    /// The questions in order, each with its path: "exists /a", "is_regular /a/b.v", "list /a/", "status /a",
    /// "current_directory", and "create /a" and "fopen /a", which always fail.
    std::vector<std::string> calls;
};

/// The file system of this process.
FIO_FAKE &fio_fake();

#endif
