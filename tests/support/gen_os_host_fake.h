// Scripted facts of the host, for tests that must know every one. One script per process.
#ifndef TESTS_SUPPORT_GEN_OS_HOST_FAKE_H
#define TESTS_SUPPORT_GEN_OS_HOST_FAKE_H

#include "zel_export_sys.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// The values of the system; a query without a value fails. No query has one at start.
struct GEN_OS_HOST_FAKE_SCRIPT
{
    struct MemoryFacts
    {
        std::uint64_t physical;
        std::uint64_t total;
        std::uint64_t available;
    };
    struct SystemVersion
    {
        std::uint32_t major;
        std::uint32_t minor;
        bool is_workstation;
    };
    struct DistributionFacts
    {
        std::string name;
        std::string version;
    };

    std::optional<MemoryFacts> memory;
    std::optional<SystemVersion> version;
    std::optional<DistributionFacts> distribution;
    std::optional<std::string> host_name;
    std::optional<std::string> user_name;
    std::map<std::string, std::vector<std::vector<unsigned char>>> hosts; ///< addresses by name
    std::optional<std::string> browser_version;
    std::optional<std::string> container_file;

    std::vector<std::string> look_ups; ///< names that were looked up so far
};

/// The script, to be written to.
GEN_API GEN_OS_HOST_FAKE_SCRIPT &gen_os_host_fake();

#endif
