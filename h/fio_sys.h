// Paths as text (FIO_PATH), searches over lists of directories (FIO_FIND), and the file-system
// calls of the suite (FIO_FILE_SYSTEM).
//
// Narrow text is bytes as the system takes them: on Windows in the active code page, on Linux
// whatever the file names hold. A null `char const *` counts as the empty text everywhere.
// Nothing here throws but for want of memory. An object belongs to one thread at a time; static
// operations and free functions may be called from any thread.
#ifndef FIO_SYS_H
#define FIO_SYS_H

#include "zel_export_sys.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <list>
#include <string>
#include <vector>

#ifdef _WIN32
#include <io.h>
#include <sys/stat.h>
#else
/// A point in time of _stat64i32; the field goes by the system's own name for it.
struct FIO_STAT_TIME
{
    std::int64_t tv_sec; ///< seconds since the Unix epoch
};

// The system's <sys/stat.h> makes macros of these three names (st_mtime is st_mtim.tv_sec). They
// are set aside for the record, whose unions answer to either spelling, so that the two headers
// may be included in any order.
#pragma push_macro("st_atime")
#pragma push_macro("st_mtime")
#pragma push_macro("st_ctime")
#undef st_atime
#undef st_mtime
#undef st_ctime

/// What FIO_FILE_SYSTEM::status() tells of a file: on Windows the runtime library's record, here
/// one with the same field names and the same bits in the mode word.
struct _stat64i32
{
    std::uint64_t st_dev;   ///< device that holds the file
    std::uint64_t st_ino;   ///< number of the file on its device
    std::uint16_t st_mode;  ///< 0x4000: a directory; 0x8000: a regular file; low nine bits: permissions
    std::uint64_t st_nlink; ///< count of names of the file
    std::uint32_t st_uid;   ///< owner
    std::uint32_t st_gid;   ///< group of the owner
    std::uint64_t st_rdev;  ///< device that a special file stands for
    std::int64_t st_size;   ///< size in bytes

    /// Last access, in seconds since the Unix epoch.
    union
    {
        std::int64_t st_atime;
        FIO_STAT_TIME st_atim;
    };
    /// Last change of the content, in seconds since the Unix epoch.
    union
    {
        std::int64_t st_mtime;
        FIO_STAT_TIME st_mtim;
    };
    /// Last change of the file's own data, in seconds since the Unix epoch.
    union
    {
        std::int64_t st_ctime;
        FIO_STAT_TIME st_ctim;
    };
};

#pragma pop_macro("st_ctime")
#pragma pop_macro("st_mtime")
#pragma pop_macro("st_atime")

/// What FIO_FILE_SYSTEM::findfirst() tells of an entry: on Windows the runtime library's record,
/// here one with the same field names and the same attribute bits.
struct _finddata64i32_t
{
    unsigned attrib;          ///< sum of 0x01 read-only, 0x02 hidden, 0x10 a directory, 0x400 a link
    std::int64_t time_create; ///< seconds since the Unix epoch; as time_write where nothing tells it
    std::int64_t time_access; ///< last access, in seconds since the Unix epoch
    std::int64_t time_write;  ///< last change, in seconds since the Unix epoch
    std::uint32_t size;       ///< size in bytes, its low 32 bits
    char name[260];           ///< name without directory, with a terminator
};
#endif

/// Numbers of the file types that have a default extension. Any other number is one without.
enum FIO_FILE_TYPE : int
{
    FIO_FILE_VHD = 5,   ///< "vhd"
    FIO_FILE_EDIF = 7,  ///< "edif"
    FIO_FILE_VHDL = 8,  ///< "vhdl"
    FIO_FILE_EDF = 9,   ///< "edf"
    FIO_FILE_SV = 12,   ///< "sv"
    FIO_FILE_V = 13,    ///< "v"
    FIO_FILE_VH = 14,   ///< "vh"
    FIO_FILE_SVH = 15,  ///< "svh"
    FIO_FILE_NET = 20,  ///< "net"
    FIO_FILE_BLIF = 21, ///< "blif"
};

/// Numbers of extensions for FIO_PATH::extension(). Any other number stands for the empty text.
enum FIO_EXTENSION_TYPE : int
{
    FIO_EXTENSION_NONE = -1, ///< the empty text
    FIO_EXTENSION_KCS = 77,  ///< "kcs"
    FIO_EXTENSION_KCP = 82,  ///< "kcp"
    FIO_EXTENSION_KRW = 118, ///< "krw"
    FIO_EXTENSION_KTM = 243, ///< "ktm"
    FIO_EXTENSION_KTA = 246, ///< "kta"
    FIO_EXTENSION_KSV = 247, ///< "ksv"
};

/// One file-system path, held as text. Nothing looks at the disk, and only become_absolute() asks
/// for the current directory.
///
/// The text is kept as given, with "/" for either separator and one for a run of them. What is
/// absolute is the same on every platform:
///
///     text          absolute  relative  unc
///     /a/b          yes       no        no
///     c:/a          yes       no        no
///     //host/a      yes       no        yes     a network path; three slashes in front are one
///     a/b, .., ""   no        yes       no
///     c:a           no        no        no      counts from what the drive has for a directory
///
/// The file name is what stands behind the last separator, so a path that ends in one has none.
/// The name of a host or a drive is never part of a file name. The extension stands behind the
/// last "." of the file name, a leading dot aside; "." and ".." have none.
///
///     text          full_directory  filename  base      extension  levels
///     c:/a/b.tar.v  c:/a/           b.tar.v   b.tar     v          1
///     a/b/          a/b/                                           2
///     .profile                      .profile  .profile             0
///
/// An empty path is how a failed search is told. Paths are compared by their fullpath(): two
/// objects put to `==` compare addresses.
class FIO_API FIO_PATH
{
public:
    /// An empty path.
    FIO_PATH() = default;

    /// Texts pass for paths.
    ///
    /// @param text  a path with either separator
    FIO_PATH(std::string const &text);

    /// Same as FIO_PATH(std::string const &).
    ///
    /// @param text  a path with either separator; null counts as empty
    FIO_PATH(char const *text);

    /// A path with the same text and the same separator.
    FIO_PATH(FIO_PATH const &) = default;

    /// The same, leaving behind a path of no certain text.
    FIO_PATH(FIO_PATH &&) = default;

    /// Replaces the path and the separator by another's.
    FIO_PATH &operator=(FIO_PATH const &) = default;

    /// The same, leaving behind a path of no certain text.
    FIO_PATH &operator=(FIO_PATH &&) = default;

    ~FIO_PATH() = default;

    /// Replaces the path; the separator is "/" again.
    ///
    /// @param text  a path with either separator
    /// @return *this
    FIO_PATH &operator=(std::string const &text);

    /// Replaces the path; the separator is "/" again.
    ///
    /// @param text  a path with either separator; null counts as empty
    /// @return *this
    FIO_PATH &operator=(char const *text);

    /// The whole text as fullpath() gives it; never null, valid while the object lives unchanged.
    operator char const *() const { return m_text.c_str(); }

    /// The whole text; empty for an empty path.
    std::string fullpath() const { return m_text; }

    /// The directory part with a separator at its end, so that a file name can be put behind it;
    /// empty for a bare name, "c:" for "c:a", and the path itself if that ends in a separator.
    std::string full_directory() const;

    /// What stands behind the last separator.
    std::string filename() const;

    /// The file name without extension and without the dot in front of it.
    std::string base() const;

    /// The extension without its dot.
    std::string extension() const;

    /// Replaces the file name.
    ///
    /// @param text  the new name. Empty: only the directory is left, with its separator. With
    ///              separators in it, it leads further down: "x/y" under "a/" gives "a/x/y"
    /// @return *this
    FIO_PATH &filename(std::string const &text);

    /// Replaces what stands before the extension, and keeps the extension that is there.
    ///
    /// @param text  the new base, with separators in it as for filename(std::string const &)
    /// @return *this
    ///
    ///     c:/a/b.v, "x" -> c:/a/x.v    c:/a/, "x/y" -> c:/a/x/y
    FIO_PATH &base(std::string const &text);

    /// Replaces the directory part.
    ///
    /// @param text  the new directory, with or without a separator at its end; empty: none
    /// @return *this
    FIO_PATH &directory(std::string const &text);

    /// Replaces the extension. A path without a file name stays as it is.
    ///
    /// @param text    the new extension, with or without a dot in front; empty: the extension goes,
    ///                with its dot
    /// @param second  if not empty, a second extension to stand behind the first
    /// @return *this
    ///
    ///     a.v, ("sv", "") -> a.sv    a.v, (".v", "gz") -> a.v.gz    a.v, ("", "") -> a
    FIO_PATH &extension(std::string const &text, std::string const &second);

    /// Replaces the extension by the texts of numbered types.
    ///
    /// @param type    number of the new extension; one without a text takes the extension away
    /// @param second  number of a second extension, FIO_EXTENSION_NONE for none
    /// @return *this
    FIO_PATH &extension(FIO_EXTENSION_TYPE type, FIO_EXTENSION_TYPE second);

    /// Moves the path, which counts as a directory whether or not it ends in a separator; it does
    /// so afterwards.
    ///
    /// @param text  where to go. Empty: nothing changes. A relative text is applied to the path,
    ///              and the whole is simplified; on an empty path it stands as it is, still
    ///              relative. Any other text replaces the path as it stands
    /// @return *this
    ///
    ///     c:/a/b, "../x" -> c:/a/x/    c:/a/b/, "d:/y" -> d:/y/    (empty), "../x" -> ../x/
    ///
    /// A drive without a root does not get one: c:a, ".." -> c:./
    FIO_PATH &cd(std::string const &text);

    /// Makes a relative path absolute, and simplifies it. Any other path stays as it is, and so
    /// does a relative one when the current directory is needed and can't be had.
    ///
    /// @param directory  what the path counts from; empty: the current directory; relative: counts
    ///                   from the current directory itself
    /// @return *this
    FIO_PATH &become_absolute(std::string const &directory);

    /// Removes "." and "..", by text alone. ".." never rises above a root, and stays in front of a
    /// relative path. What ended in one of the two ends in a separator; a relative path of which
    /// nothing is left is "./", and one that would begin like a drive has "./" in front. An empty
    /// path stays empty.
    ///
    /// @return *this
    ///
    ///     a/./b/../c -> a/c    c:/../x -> c:/x    a/../../b -> ../b    a/b/.. -> a/    a/.. -> ./
    ///     a/../c:/x -> ./c:/x
    FIO_PATH &become_simplified();

    /// The path counts from a root; network paths do.
    bool absolute() const;

    /// The path counts from a directory to be told; the empty path does. Neither relative nor
    /// absolute is a drive without a separator behind it.
    bool relative() const;

    /// The path begins with two separators and the name of a host.
    bool unc() const;

    /// Count of the directories named in the path, the root left out; 0 for a bare name.
    int levels() const;

    /// Sets the separator of the text, now and until another text is assigned.
    ///
    /// @param separator  '/' or '\\'; any other character changes nothing
    /// @return *this
    FIO_PATH &path_separator(char separator);

    /// Sets the separator of the platform's own calls: '\\' on Windows, '/' elsewhere.
    ///
    /// @return *this
    FIO_PATH &change_path_separators_for_windows_api();

private:
    std::string m_text;
    char m_separator = '/'; // the one in m_text, whatever operation changed it last
};

/// A search over an ordered list of directories, or a scan by a wild-card pattern.
///
/// A text is a pattern if it holds no ";" and has "*" or "?" in its last component; any other text
/// is a list of directories with ";" between them, where empty elements are skipped.
///
/// A relative directory counts from the one that was set by
/// set_directory_for_results_to_become_absolute_to(), else from the current one at the time of the
/// search. The results have forward slashes.
class FIO_API FIO_FIND
{
public:
    /// @param text  a list of directories or a pattern; empty: a list of none
    explicit FIO_FIND(std::string const &text);

    /// @param paths  the directories, taken as they stand
    explicit FIO_FIND(std::list<FIO_PATH> const &paths);

    FIO_FIND(FIO_FIND const &) = delete;
    FIO_FIND &operator=(FIO_FIND const &) = delete;
    ~FIO_FIND() = default;

    /// Drops the list or pattern and reads another one. The directory that results become absolute
    /// to stays, and so does the address that get_paths() gave.
    ///
    /// @param text  as for the constructor
    void init(std::string const &text);

    /// The list itself, for the caller to read and change at any time between two calls; valid as
    /// long as this object. Empty paths in it are passed over. Empty for a pattern.
    std::list<FIO_PATH> *get_paths() { return &m_paths; }

    /// Sets the directory from which relative directories of the list count. Touches no disk.
    ///
    /// @param directory  a directory, itself from the current one if relative; null or empty: the
    ///                   current directory, as at the beginning
    /// @return whether a directory is set now
    bool set_directory_for_results_to_become_absolute_to(char const *directory);

    /// Looks for a file or directory under each directory of the list, in order, at the cost of
    /// one system call for each.
    ///
    /// @param path  what to look for; an empty or absolute path is not found
    /// @return the first hit, absolute unless the list names a drive without a root; empty if
    ///         there is none
    FIO_PATH find_first_relative_path(FIO_PATH const &path);

    /// Looks for every regular file, links to one included, of a base name and some extensions.
    /// Results come in the order of the list and, within a directory, in byte order of the names.
    ///
    /// @param name        the base name, which may begin with a relative directory; "*" alone
    ///                    means every file, whatever its extension; empty means none
    /// @param extensions  the extensions, with or without a dot in front; an empty one stands for
    ///                    a file without. Compared without regard of case where the file system
    ///                    does so
    /// @param out         the results are appended to it; null: nothing is looked for
    /// @param absolute    results of relative directories become absolute; else they begin as the
    ///                    list has them
    /// @param descend     subdirectories are searched too, each behind the files of its parent;
    ///                    links to directories are not followed
    /// @return whether anything was found
    bool find_all(std::string const &name, std::vector<std::string> const &extensions, std::list<FIO_PATH> *out,
                  bool absolute, bool descend);

    /// Scans the directory of the pattern anew for regular files, links to one included, in byte
    /// order of the names. "*" stands for any run of characters, "?" for one; case counts where the
    /// file system tells it apart; "*.*" is every file.
    ///
    /// @return the first file's name without directory; empty if there is none, or no pattern
    std::string find_first();

    /// @return the name behind the one that find_first() or find_next() gave last; empty behind
    ///         the last one
    std::string find_next();

private:
    std::list<FIO_PATH> m_paths;
    FIO_PATH m_pattern;
    FIO_PATH m_results_directory;
    std::string m_buffer;             // the path being tried; kept for its memory
    std::vector<std::string> m_names; // what the scan found
    std::size_t m_next_name = 0;
};

/// Calls to the file system. Paths may be longer than the 260 characters of the common calls on
/// Windows, but for findfirst().
class FIO_API FIO_FILE_SYSTEM
{
public:
    /// A file or directory of that name exists; links are followed.
    ///
    /// @param path  the name; none exists for the empty text
    static bool exists(std::string const &path);

    /// Same as exists(std::string const &).
    ///
    /// @param path  the name; null counts as empty
    static bool exists(char const *path);

    /// Tells of a file or directory; links are followed.
    ///
    /// @param path    its name, where a directory may have a separator at its end
    /// @param record  filled if the answer is true, else left alone; null: the answer is false. In
    ///                its `st_mode` the bit 0x4000 is set for directories and no others, 0x8000 for
    ///                regular files and no others
    /// @return whether the file system answered
    static bool status(std::string const &path, struct _stat64i32 *record);

    /// Creates one directory, whose parent exists.
    ///
    /// @param path  its name, with or without a separator at its end
    /// @return whether it was created; false if something of that name is there
    static bool create(std::string const &path);

    /// Opens a stdio stream, as the runtime library does.
    ///
    /// @param path  name of the file
    /// @param mode  "r", "w" and so on; null counts as empty
    /// @return the stream, for std::fclose(); null on failure
    static std::FILE *fopen(char const *path, char const *mode);

    /// The process's current directory with forward slashes, without one at the end unless it is a
    /// root; empty if it can't be had.
    static std::string get_current_directory();

    /// Begins a scan of one directory.
    ///
    /// @param pattern  a path with "*" and "?" in its last component; "*.*" is every name. Files,
    ///                 directories and links match alike, "." and ".." too
    /// @param data     filled for the first match. `attrib` has the bits 0x10 for a directory and
    ///                 0x400 for a link, whose other fields tell of what it leads to; `size` is the
    ///                 low 32 bits
    /// @return a handle for findnext() and findclose(); -1 on failure, with `errno` as ENOENT if
    ///         nothing matches
    ///
    /// On Linux the names come in byte order, on Windows as the file system has them.
    static std::intptr_t findfirst(char const *pattern, struct _finddata64i32_t *data);

    /// Goes on with a scan.
    ///
    /// @param handle  what findfirst() gave
    /// @param data    filled for the next match
    /// @return 0, or -1 with `errno` as ENOENT behind the last match
    static int findnext(std::intptr_t handle, struct _finddata64i32_t *data);

    /// Ends a scan.
    ///
    /// @param handle  what findfirst() gave; not valid any more
    /// @return 0, or -1 with `errno` as EINVAL for a handle of -1
    static int findclose(std::intptr_t handle);
};

/// The full path in the form that the platform's wide calls take at any length.
///
/// @param path  a path; relative: from the current directory
/// @return empty for the empty text
///
/// On Windows "\\?\C:\dir\file" or "\\?\UNC\host\share\file", with "." and ".." resolved; a device
/// stays "\\.\NUL". On Linux the absolute path with every byte widened as it is, so that its low
/// bytes are the narrow path again.
FIO_API std::wstring fio_get_unc_full_path(char const *path);

/// The default extension of a file type.
///
/// @param type  number of the type
/// @return the extension without a dot, static; the empty text for any other number
FIO_API char const *fio_get_default_extension_string(FIO_FILE_TYPE type);

#endif
