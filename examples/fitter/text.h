// Small texts of the tool's output.
#ifndef FITTER_TEXT_H
#define FITTER_TEXT_H

#include <cstdint>
#include <string>

namespace fitter {

std::string number(std::uint64_t value);

/// A number of hundredths: 1205 -> "12.05"
std::string hundredths(std::uint64_t value);

/// A line of the tool's output: a title, padded to the width of its column, and a text.
std::string line(char const *title, std::string const &text);

} // namespace fitter

#endif
