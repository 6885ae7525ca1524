// Files and other objects of the system that the process has open.
#ifndef TESTS_SUPPORT_OPEN_DESCRIPTORS_H
#define TESTS_SUPPORT_OPEN_DESCRIPTORS_H

#include <cstddef>

/// The open descriptors of the process; on Windows its open handles.
std::size_t open_descriptor_count();

#endif
