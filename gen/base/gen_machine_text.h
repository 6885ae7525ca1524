// Facts of the processors in the text files in which the system describes itself. Each function returns false, and
// leaves its output alone, if the text doesn't contain the fact.
#ifndef GEN_MACHINE_TEXT_H
#define GEN_MACHINE_TEXT_H

#include <cstdint>
#include <string_view>

/// Converts a list of processors to a mask of the first 64: "0-3,8" -> 0x10f. Higher numbers are ignored.
bool gen_read_processor_list(std::string_view text, std::uint64_t &mask);

/// Converts a frequency in kHz: "2400000" -> 2400.
bool gen_read_base_frequency(std::string_view text, int &mhz);

/// Reads the frequency of the first processor from a description of all: "cpu MHz : 2596.122" -> 2596.
bool gen_read_processor_frequency(std::string_view text, int &mhz);

#endif
