// A report or log that the library writes for its user: one rule for all of them.
//
// Such a file is written in place. Its text goes out in blocks of whole lines, so that processes that append to one
// file don't cut each other's lines. After the first write, flush or close that fails the file takes no more text, and
// one information message names file and reason:
//
//     Info (GEN): cannot write "profile_bins_Fitter.log": No space left on device
//
// A file without its end is easily recognised; one without its beginning would look complete. The caller goes on as if
// the file had been written.
#ifndef GEN_LOG_FILE_H
#define GEN_LOG_FILE_H

#include <cstddef>
#include <cstdio>
#include <fstream>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

/// One thread at a time. The message may call a function of the tool, so no lock may be held around any call.
class GEN_LOG_FILE : private std::streambuf
{
public:
    struct CloseFile
    {
        void operator()(std::FILE *file) const { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, CloseFile>;

    /// Opens a file as std::brisel_ofstream does, shared with other processes. If that fails, there is no message, and
    /// all text is dropped.
    ///
    /// @param name  the file, as the message shows it
    /// @param mode  std::ios::out to replace a file; std::ios::app to append to it
    GEN_LOG_FILE(std::string const &name, std::ios_base::openmode mode);

    /// Takes over a file that was opened for writing under that name; null counts as a failed open.
    GEN_LOG_FILE(std::string const &name, File file);

    /// Closes the file, and lets no exception out.
    ~GEN_LOG_FILE() override;

    GEN_LOG_FILE(GEN_LOG_FILE const &) = delete;
    GEN_LOG_FILE &operator=(GEN_LOG_FILE const &) = delete;

    /// Whether the open succeeded.
    bool is_open() const { return m_block != nullptr; }

    /// Appends a text.
    void write(std::string_view text);

    /// The file as a stream. Its state is bad after a failure; its flush writes all text so far.
    std::ostream &stream() { return m_stream; }

private:
    // A file that was opened by its name.
    class NamedFile : public std::filebuf
    {
    public:
        // Forgets the text that a write has left in the buffer. The close would write it.
        void drop_text() { setp(nullptr, nullptr); }
    };

    int_type overflow(int_type character) override;
    std::streamsize xsputn(char const *text, std::streamsize size) override;
    int sync() override;

    bool takes_text() const { return m_block != nullptr && !m_has_failed; }
    void write_first(std::size_t size);
    void close();
    int write_to_system(char const *text, std::size_t size);
    int close_in_system();
    void fail(int error);

    std::string m_name;
    NamedFile m_named;
    File m_file;                     // in place of m_named
    std::unique_ptr<char[]> m_block; // the text that did not go out yet; null if the open failed
    std::size_t m_size = 0;          // of that text
    bool m_has_failed = false;
    std::ostream m_stream{this};
};

#endif
