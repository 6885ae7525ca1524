// The library's file streams. They differ from the standard streams only in the way they open a file: paths of any
// length are accepted on Windows, the caller says there what others may do with the file, and an open() of an open
// stream has no effect. A stream belongs to one thread at a time.
#ifndef GEN_FSTREAM_SYS_H
#define GEN_FSTREAM_SYS_H

#include "zel_export_sys.h"

#include <fstream>

/// The value for `protection` with which other processes may read and write the file while it is open.
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
    /// @param mode        bits of std::ios_base::openmode, such as std::ios::out or std::ios::app; out is always added
    /// @param protection  on Windows what others may do with the file while it is open: GEN_SHARE_ALL to read and write
    ///                    it, 0x30 to write, 0x20 to read, 0x10 nothing; with any other value the open fails. On Linux
    ///                    it has no effect, and the file is shared
    ///
    /// On success the state of the stream is cleared, on failure failbit is set. If a file is open already, it stays
    /// open and the state doesn't change; a standard stream would set failbit.
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

/// Writes the current local time and a line end: "Sat Nov 14 19:03:47 2026\n". Writes nothing if the system can't
/// convert the time.
///
/// @param stream  not null
GEN_API void gen_print_local_time(std::brisel_ofstream *stream);

#endif
