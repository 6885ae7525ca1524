// The library's file streams. They are the standard ones, but for the way they open: through the system's long-path
// form, with sharing, and without harm to a file that is already open. One thread at a time uses a stream.
#ifndef GEN_FSTREAM_SYS_H
#define GEN_FSTREAM_SYS_H

#include "zel_export_sys.h"

#include <fstream>

/// The sharing of a file that others may read and write meanwhile.
constexpr int GEN_SHARE_ALL = 0x40;

namespace std {

/// An output file stream.
class GEN_API brisel_ofstream : public basic_ofstream<char>
{
public:
    /// A stream without a file.
    brisel_ofstream();
    /// A stream on which open() has been called.
    brisel_ofstream(char const *path, int mode, int protection);
    ~brisel_ofstream() override;

    /// Opens a file for output.
    ///
    /// @param path        the file; not null
    /// @param mode        std::ios_base mode bits, such as std::ios::out or std::ios::app; out is always added
    /// @param protection  sharing, GEN_SHARE_ALL; has no effect here: the file is always shared for reading and writing
    ///
    /// Failure sets failbit and throws nothing by itself; success clears the state. If a file is open already, nothing
    /// at all happens: that file stays open, and the state, unlike in the standard stream, stays as it is.
    void open(char const *path, int mode, int protection);
};

/// An input file stream.
class GEN_API brisel_ifstream : public basic_ifstream<char>
{
public:
    /// A stream without a file.
    brisel_ifstream();
    /// A stream on which open() has been called.
    brisel_ifstream(char const *path, int mode, int protection);
    ~brisel_ifstream() override;

    /// Opens a file for input, as brisel_ofstream::open() does for output; std::ios::in is always added.
    void open(char const *path, int mode, int protection);
};

} // namespace std

/// Writes the present local time and a line end: "Sat Nov 14 19:03:47 2026\n". Nothing if it can't be converted.
///
/// @param stream  not null
GEN_API void gen_print_local_time(std::brisel_ofstream *stream);

#endif
