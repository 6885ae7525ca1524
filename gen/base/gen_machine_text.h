// What a system that tells of its processors in small text files says in them. Each function returns false, and leaves
// its output alone, if the text doesn't say it.
#ifndef GEN_MACHINE_TEXT_H
#define GEN_MACHINE_TEXT_H

#include <cstdint>
#include <string_view>

/// A list of processors as a mask of the first 64: "0-3,8" gives 0x10f. Processors from 64 on are left out.
bool gen_read_processor_list(std::string_view text, std::uint64_t &mask);

/// A frequency in kHz: "2400000" gives 2400.
bool gen_read_base_frequency(std::string_view text, int &mhz);

/// The frequency of the first processor in a description of all: "cpu MHz : 2596.122" gives 2596.
bool gen_read_processor_frequency(std::string_view text, int &mhz);

#endif
