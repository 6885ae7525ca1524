// Paths as text (FIO_PATH), searches over lists of directories (FIO_FIND), and the file-system
// calls of the suite (FIO_FILE_SYSTEM).
//
// Narrow text is in the encoding of the system: on Windows in the active code page, on Linux the
// bytes of the file names. On Windows a file whose name the code page doesn't have is never a result. A null `char
// const *` counts as the empty text everywhere. Only std::bad_alloc is thrown. An object belongs to one thread at a
// time; any thread may call static and free functions.
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
/// A point in time of _stat64i32. The field has the name that the system's record uses.
struct FIO_STAT_TIME
{
    std::int64_t tv_sec; ///< seconds since the Unix epoch
};

// The system's <sys/stat.h> defines these three names as macros (st_mtime is st_mtim.tv_sec). The
// macros are suspended while the record is defined. Its unions contain both spellings, so that this
// header and <sys/stat.h> may be included in any order.
#pragma push_macro("st_atime")
#pragma push_macro("st_mtime")
#pragma push_macro("st_ctime")
#undef st_atime
#undef st_mtime
#undef st_ctime

/// The facts that FIO_FILE_SYSTEM::status() reports of a file. On Windows it is the record of the
/// runtime library; this one has the same field names and the same bits in the mode word.
struct _stat64i32
{
    std::uint64_t st_dev;   ///< device that holds the file
    std::uint64_t st_ino;   ///< number of the file on its device
    std::uint16_t st_mode;  ///< 0x4000: a directory; 0x8000: a regular file; low nine bits: permissions
    std::uint64_t st_nlink; ///< number of names (hard links) of the file
    std::uint32_t st_uid;   ///< owner
    std::uint32_t st_gid;   ///< group of the owner
    std::uint64_t st_rdev;  ///< device that a special file represents
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
    /// Last change of the file's status (owner, permissions, names), in seconds since the Unix epoch.
    union
    {
        std::int64_t st_ctime;
        FIO_STAT_TIME st_ctim;
    };
};

#pragma pop_macro("st_ctime")
#pragma pop_macro("st_mtime")
#pragma pop_macro("st_atime")

/// The facts that FIO_FILE_SYSTEM::findfirst() reports of an entry. On Windows it is the record of
/// the runtime library; this one has the same field names and the same attribute bits.
struct _finddata64i32_t
{
    unsigned attrib;          ///< sum of 0x01 read-only, 0x02 hidden, 0x10 a directory, 0x400 a link
    std::int64_t time_create; ///< creation, in seconds since the Unix epoch; time_write if unknown
    std::int64_t time_access; ///< last access, in seconds since the Unix epoch
    std::int64_t time_write;  ///< last change, in seconds since the Unix epoch
    std::uint32_t size;       ///< size in bytes, its low 32 bits
    char name[260];           ///< name without directory, with a terminator
};
#endif

/// Numbers of the file types that have a default extension. No other number has one.
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

/// Numbers of extensions for FIO_PATH::extension(). Any other number means the empty text.
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

/// A file-system path, stored as text. No operation accesses the disk; only become_absolute() reads
/// the current directory.
///
/// The given text is stored with "/" in place of each run of "/" and "\". The rules for absolute and
/// relative paths are the same on every platform:
///
///     text          absolute  relative  unc
///     /a/b          yes       no        no
///     c:/a          yes       no        no
///     //host/a      yes       no        yes     a network path; three or more slashes count as one
///     a/b, .., ""   no        yes       no
///     c:a           no        no        no      relative to the current directory of the drive
///
/// The file name is the text after the last separator, so a path that ends in one has no file name.
/// The name of a host or a drive is never part of a file name. The extension is the text after the
/// last "." of the file name, except for a leading dot; "." and ".." have no extension.
///
///     text          full_directory  filename  base      extension  levels
///     c:/a/b.tar.v  c:/a/           b.tar.v   b.tar     v          1
///     a/b/          a/b/                                           2
///     .profile                      .profile  .profile             0
///
/// A search that finds nothing returns an empty path. To compare two paths, compare their
/// fullpath(): `==` on two objects compares the addresses of their texts.
class FIO_API FIO_PATH
{
public:
    /// An empty path.
    FIO_PATH() = default;

    /// Implicit, so that a string converts to a path.
    ///
    /// @param text  a path with either separator
    FIO_PATH(std::string const &text);

    /// Same as FIO_PATH(std::string const &).
    ///
    /// @param text  a path with either separator; null counts as empty
    FIO_PATH(char const *text);

    /// A path with the same text and the same separator.
    FIO_PATH(FIO_PATH const &) = default;

    /// Moves the text and the separator; the source then has an unspecified text.
    FIO_PATH(FIO_PATH &&) = default;

    /// Copies the text and the separator.
    FIO_PATH &operator=(FIO_PATH const &) = default;

    /// Moves the text and the separator; the source then has an unspecified text.
    FIO_PATH &operator=(FIO_PATH &&) = default;

    ~FIO_PATH() = default;

    /// Replaces the path and resets the separator to "/".
    ///
    /// @param text  a path with either separator
    /// @return *this
    FIO_PATH &operator=(std::string const &text);

    /// Replaces the path and resets the separator to "/".
    ///
    /// @param text  a path with either separator; null counts as empty
    /// @return *this
    FIO_PATH &operator=(char const *text);

    /// The whole text; never null, valid until the object is changed or destroyed.
    operator char const *() const { return m_text.c_str(); }

    /// The whole text; empty for an empty path.
    std::string fullpath() const { return m_text; }

    /// The directory part with a separator at its end, so that a file name can be appended. Empty
    /// for a bare name, "c:" for "c:a", and the path itself if it ends in a separator.
    std::string full_directory() const;

    /// The text after the last separator.
    std::string filename() const;

    /// The file name without the extension and its dot.
    std::string base() const;

    /// The extension without its dot.
    std::string extension() const;

    /// Replaces the file name.
    ///
    /// @param text  the new name. If empty, only the directory with its separator is left. A text
    ///              with separators names subdirectories: "x/y" in "a/b" gives "a/x/y"
    /// @return *this
    FIO_PATH &filename(std::string const &text);

    /// Replaces the text before the extension, and keeps the extension if there is one.
    ///
    /// @param text  the new base; separators as for filename(std::string const &)
    /// @return *this
    ///
    ///     c:/a/b.v, "x" -> c:/a/x.v    c:/a/, "x/y" -> c:/a/x/y
    FIO_PATH &base(std::string const &text);

    /// Replaces the directory part.
    ///
    /// @param text  the new directory, with or without a separator at its end; empty for none
    /// @return *this
    FIO_PATH &directory(std::string const &text);

    /// Replaces the extension. A path without a file name stays as it is.
    ///
    /// @param text    the new extension, with or without a dot at its beginning; if empty, the
    ///                extension and its dot are removed
    /// @param second  if not empty, a second extension that follows the first
    /// @return *this
    ///
    ///     a.v, ("sv", "") -> a.sv    a.v, (".v", "gz") -> a.v.gz    a.v, ("", "") -> a
    FIO_PATH &extension(std::string const &text, std::string const &second);

    /// Replaces the extension by the texts of numbered types.
    ///
    /// @param type    number of the new extension; a number without a text removes the extension
    /// @param second  number of a second extension, FIO_EXTENSION_NONE for none
    /// @return *this
    FIO_PATH &extension(FIO_EXTENSION_TYPE type, FIO_EXTENSION_TYPE second);

    /// Changes the directory that the path names, as the shell command cd does. The path counts as
    /// a directory, with or without a separator at its end. The result ends in a separator.
    ///
    /// @param text  the directory to change to. If empty, nothing changes. If relative, it is
    ///              appended to the path, and the result is simplified; an empty path becomes the
    ///              text itself, which stays relative. Any other text replaces the path
    /// @return *this
    ///
    ///     c:/a/b, "../x" -> c:/a/x/    c:/a/b/, "d:/y" -> d:/y/    (empty), "../x" -> ../x/
    ///
    /// A path with a drive but without a root stays so: c:a, ".." -> c:./
    FIO_PATH &cd(std::string const &text);

    /// Makes a relative path absolute, and simplifies it. Any other path does not change, and
    /// neither does a relative path if the current directory is needed and can't be read.
    ///
    /// @param directory  the directory that the path is relative to; if empty, the current
    ///                   directory; if relative, it is itself relative to the current directory
    /// @return *this
    FIO_PATH &become_absolute(std::string const &directory);

    /// Removes "." and ".." by rules on the text alone, without following links. ".." never leads
    /// above a root, and is kept at the beginning of a relative path. A path that ended in "." or
    /// ".." ends in a separator. A relative path of which nothing is left becomes "./", and one that
    /// would begin like a drive gets the prefix "./". An empty path stays empty.
    ///
    /// @return *this
    ///
    ///     a/./b/../c -> a/c    c:/../x -> c:/x    a/../../b -> ../b    a/b/.. -> a/    a/.. -> ./
    ///     a/../c:/x -> ./c:/x
    FIO_PATH &become_simplified();

    /// Whether the path begins at a root; network paths do.
    bool absolute() const;

    /// Whether the path is relative to a directory; the empty path is. A path with a drive that no
    /// separator follows is neither relative nor absolute.
    bool relative() const;

    /// Whether the path begins with two separators and the name of a host.
    bool unc() const;

    /// The number of directories in the path, without the root; 0 for a bare name.
    int levels() const;

    /// Sets the separator of the text. It stays until another text is assigned.
    ///
    /// @param separator  '/' or '\\'; any other character changes nothing
    /// @return *this
    FIO_PATH &path_separator(char separator);

    /// Sets the separator that the platform's own functions expect: '\\' on Windows, '/' elsewhere.
    ///
    /// @return *this
    FIO_PATH &change_path_separators_for_windows_api();

private:
    std::string m_text;
    char m_separator = '/'; // the separator in m_text
};

/// A search over an ordered list of directories, or a scan of one directory by a wild-card pattern.
///
/// A text is a pattern if it contains no ";" and contains "*" or "?" in its last component. Any
/// other text is a list of directories, separated by ";"; empty elements are skipped.
///
///     "rtl;c:/ip"    a list of two directories
///     "rtl/*.v"      a pattern
///     "rtl/*.v;lib"  a list; the first directory would be called "*.v"
///
/// A relative directory is relative to the one that was set by
/// set_directory_for_results_to_become_absolute_to(), or else to the current directory at the time
/// of the search. The results have forward slashes.
class FIO_API FIO_FIND
{
public:
    /// @param text  a list of directories or a pattern; the empty text is an empty list
    explicit FIO_FIND(std::string const &text);

    /// @param paths  the directories, copied unchanged
    explicit FIO_FIND(std::list<FIO_PATH> const &paths);

    FIO_FIND(FIO_FIND const &) = delete;
    FIO_FIND &operator=(FIO_FIND const &) = delete;
    ~FIO_FIND() = default;

    /// Replaces the list or pattern. The directory for absolute results and the address that
    /// get_paths() returned stay.
    ///
    /// @param text  as for the constructor
    void init(std::string const &text);

    /// The list itself. The caller may read and change it between two calls; it is valid as long as
    /// this object. Empty paths in it are skipped. The list is empty for a pattern.
    std::list<FIO_PATH> *get_paths() { return &m_paths; }

    /// Sets the directory that relative directories of the list are relative to. Doesn't access the
    /// disk.
    ///
    /// @param directory  a directory; if relative, it is itself relative to the current directory.
    ///                   Null or empty means the current directory, as in a new object
    /// @return whether a directory is set now
    bool set_directory_for_results_to_become_absolute_to(char const *directory);

    /// Looks for a file or directory under each directory of the list, in order. Each directory
    /// costs one system call.
    ///
    /// @param path  a relative path; an empty or absolute one is never found
    /// @return the first path that exists, absolute unless its directory has a drive without a root;
    ///         empty if none exists
    FIO_PATH find_first_relative_path(FIO_PATH const &path);

    /// Finds all regular files, and links to them, with a base name and one of several extensions.
    /// The results are in the order of the list and, within a directory, in byte order of the names.
    ///
    /// @param name        the base name, which may begin with a relative directory; "*" alone
    ///                    means every file with any extension; the empty text finds nothing
    /// @param extensions  the extensions, with or without a dot at their beginning; an empty one
    ///                    means files without an extension. Case is ignored where the platform's
    ///                    file systems do so
    /// @param out         the results are appended to it; null finds nothing
    /// @param absolute    whether results of relative directories are made absolute; if not, they
    ///                    begin with the directory as it is in the list
    /// @param descend     whether subdirectories are searched too, each after the files of its
    ///                    parent; links to directories are not followed
    /// @return whether anything was found
    bool find_all(std::string const &name, std::vector<std::string> const &extensions, std::list<FIO_PATH> *out,
                  bool absolute, bool descend);

    /// Scans the directory of the pattern for regular files, and links to them, in byte order of
    /// the names. "*" matches any run of characters, "?" matches one character, and "*.*" matches
    /// every file. Case is ignored where the platform's file systems do so.
    ///
    /// @return the name of the first file, without directory; empty if there is none or no pattern
    std::string find_first();

    /// Continues the scan of find_first().
    ///
    /// @return the next name; empty after the last one
    std::string find_next();

private:
    std::list<FIO_PATH> m_paths;
    FIO_PATH m_pattern;
    FIO_PATH m_results_directory;
    std::string m_buffer;             // the path being tried; a member, so that its memory is reused
    std::vector<std::string> m_names; // the names that the scan found
    std::size_t m_next_name = 0;
};

/// Calls to the file system. On Windows they accept paths of more than 260 characters (MAX_PATH). A
/// device, which Windows sees in a name such as "aux.v" in any directory, is no file: it doesn't exist
/// and no scan finds it. A colon that doesn't follow a drive is part of no name there.
class FIO_API FIO_FILE_SYSTEM
{
public:
    /// Whether a file or directory of that name exists; links are followed.
    ///
    /// @param path  the name; false for the empty text
    static bool exists(std::string const &path);

    /// Same as exists(std::string const &).
    ///
    /// @param path  the name; null counts as empty
    static bool exists(char const *path);

    /// Reports the facts of a file or directory; links are followed.
    ///
    /// @param path    its name; a directory may have a separator at its end
    /// @param record  filled on success, else unchanged; if null, the result is false. In `st_mode`
    ///                the bit 0x4000 is set for directories only, and 0x8000 for regular files only
    /// @return whether the record was filled
    static bool status(std::string const &path, struct _stat64i32 *record);

    /// Creates one directory, whose parent exists.
    ///
    /// @param path  its name, with or without a separator at its end
    /// @return whether it was created; false if that name exists already
    static bool create(std::string const &path);

    /// Opens a stdio stream, as std::fopen() does.
    ///
    /// @param path  name of the file
    /// @param mode  "r", "w" and so on; null counts as empty
    /// @return the stream, which the caller closes with std::fclose(); null on failure
    static std::FILE *fopen(char const *path, char const *mode);

    /// The current directory of the process, with forward slashes and without one at the end unless
    /// it is a root; empty if it can't be read.
    static std::string get_current_directory();

    /// Begins a scan of one directory.
    ///
    /// @param pattern  a path with "*" and "?" in its last component; "*.*" matches every name.
    ///                 Files, directories, links, "." and ".." can match
    /// @param data     filled for the first match. `attrib` contains 0x10 for a directory and 0x400
    ///                 for a link; the other fields of a link describe its target. `size` is the
    ///                 low 32 bits of the size
    /// @return a handle for findnext(), to be released with findclose(); -1 on failure, with `errno`
    ///         set to ENOENT if nothing matches
    ///
    /// The names are in byte order on Linux, and in the order of the file system on Windows, where
    /// names with characters that the code page doesn't have are left out.
    static std::intptr_t findfirst(char const *pattern, struct _finddata64i32_t *data);

    /// Continues a scan.
    ///
    /// @param handle  the result of findfirst()
    /// @param data    filled for the next match
    /// @return 0; -1 after the last match, with `errno` set to ENOENT
    static int findnext(std::intptr_t handle, struct _finddata64i32_t *data);

    /// Ends a scan and releases its handle.
    ///
    /// @param handle  the result of findfirst()
    /// @return 0; -1 for a handle of -1, with `errno` set to EINVAL
    static int findclose(std::intptr_t handle);
};

/// The full path in the form in which the platform's wide functions accept any length.
///
/// @param path  a path; a relative one is relative to the current directory
/// @return the full path; empty for the empty text, and on Windows for a text that is no path: one with
///         a colon elsewhere than after a drive, or one that is no text of the code page
///
/// On Windows "\\?\C:\dir\file" or "\\?\UNC\host\share\file", with "." and ".." resolved; a device
/// stays "\\.\NUL". On Linux the absolute path with each byte widened to one character, so that the
/// low bytes are the narrow path.
FIO_API std::wstring fio_get_unc_full_path(char const *path);

/// The default extension of a file type.
///
/// @param type  number of the type
/// @return the extension without a dot, a static text; the empty text for any other number
FIO_API char const *fio_get_default_extension_string(FIO_FILE_TYPE type);

#endif
