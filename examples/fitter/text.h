// Small texts of the tool's output.
#ifndef FITTER_TEXT_H
#define FITTER_TEXT_H

#include <cstdint>
#include <string>

namespace fitter {

std::string number(std::uint64_t value);

/// A number of hundredths: 1205 -> "12.05"
std::string hundredths(std::uint64_t value);

/// A line of what the tool tells: a title in a column of its own, and a text.
std::string line(char const *title, std::string const &text);

} // namespace fitter

#endif
