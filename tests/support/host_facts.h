// The facts of the host as the system's own tools and calls report them, for comparison.
#ifndef TESTS_SUPPORT_HOST_FACTS_H
#define TESTS_SUPPORT_HOST_FACTS_H

#include <cstdint>
#include <string>

std::string host_facts_host_name();
std::string host_facts_user_name();
/// Name and version of the distribution; empty where systems are distinguished in another way, or if it has none.
std::string host_facts_distribution_name();
std::string host_facts_distribution_version();
/// In bytes.
std::uint64_t host_facts_physical_memory();
/// Version of the browser that comes with the system; empty if there is none.
std::string host_facts_browser_version();

#endif
