// Small texts of the tool's output.
#ifndef FITTER_TEXT_H
#define FITTER_TEXT_H

#include <cstdint>
#include <string>

namespace fitter {

std::string number(std::uint64_t value);

/// A number of hundredths: 1205 -> "12.05"
std::string hundredths(std::uint64_t value);

/// A line of the tool's output: a title, padded to the width of its column, and a text, printable.
std::string line(char const *title, std::string const &text);

/// The text with "?" for each control character: the codes 0 to 31 and 127 to 159. A terminal could execute those that
/// the names in a netlist contain. The other characters of UTF-8 stay.
std::string printable(std::string const &text);

} // namespace fitter

#endif
