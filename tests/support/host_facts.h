// What the system's own tools and calls tell about the host, for comparison.
#ifndef TESTS_SUPPORT_HOST_FACTS_H
#define TESTS_SUPPORT_HOST_FACTS_H

#include <cstdint>
#include <string>

std::string host_facts_host_name();
std::string host_facts_user_name();
/// In bytes.
std::uint64_t host_facts_physical_memory();

#endif
