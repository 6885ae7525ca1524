#include "gen/process/gen_log_file.h"

#include "gen/base/gen_argument_slots.h"
#include "gen/os/gen_os.h"
#include "gen_fstream_sys.h"
#include "mem_sys.h"
#include "sys/sys_write.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace {

constexpr std::size_t BLOCK_SIZE = 65536;

// How long a block waits for room, in a file that is a pipe.
constexpr int WAIT_MSEC = 1000;

// Why a call has just failed.
int last_error()
{
    return errno == 0 ? EIO : errno;
}

// The size of the whole lines at the beginning of a text; the size of the text if it contains no line end.
std::size_t size_of_lines(std::string_view text)
{
    std::size_t const line_end = text.rfind('\n');
    return line_end == std::string_view::npos ? text.size() : line_end + 1;
}

} // namespace

GEN_LOG_FILE::GEN_LOG_FILE(std::string const &name, std::ios_base::openmode mode) : m_name(name)
{
    if (gen_os_open_stream(m_named, name.c_str(), mode | std::ios_base::out, GEN_SHARE_ALL))
        m_block = std::make_unique<char[]>(BLOCK_SIZE);
    else
        m_stream.setstate(std::ios::failbit);
}

GEN_LOG_FILE::GEN_LOG_FILE(std::string const &name, File file) : m_name(name), m_file(std::move(file))
{
    if (m_file != nullptr)
        m_block = std::make_unique<char[]>(BLOCK_SIZE);
    else
        m_stream.setstate(std::ios::failbit);
}

GEN_LOG_FILE::~GEN_LOG_FILE()
{
    try {
        close();
    } catch (...) { // of the message
    }
}

void GEN_LOG_FILE::write(std::string_view text)
{
    while (!text.empty() && takes_text()) {
        std::size_t const size = std::min(text.size(), BLOCK_SIZE - m_size);
        std::memcpy(&m_block[m_size], text.data(), size);
        m_size += size;
        text.remove_prefix(size);
        if (m_size == BLOCK_SIZE)
            write_first(size_of_lines({m_block.get(), m_size}));
    }
}

GEN_LOG_FILE::int_type GEN_LOG_FILE::overflow(int_type character)
{
    if (traits_type::eq_int_type(character, traits_type::eof()))
        return traits_type::not_eof(character);
    char const text = traits_type::to_char_type(character);
    return xsputn(&text, 1) == 1 ? character : traits_type::eof();
}

std::streamsize GEN_LOG_FILE::xsputn(char const *text, std::streamsize size)
{
    write({text, static_cast<std::size_t>(size)});
    return takes_text() ? size : 0;
}

int GEN_LOG_FILE::sync()
{
    if (takes_text())
        write_first(m_size);
    return takes_text() ? 0 : -1;
}

// Writes the first part of the text in the block.
void GEN_LOG_FILE::write_first(std::size_t size)
{
    int const error = write_to_system(m_block.get(), size);
    if (error != 0)
        return fail(error);
    m_size -= size;
    std::memmove(m_block.get(), &m_block[size], m_size);
}

void GEN_LOG_FILE::close()
{
    if (!is_open())
        return;
    if (takes_text())
        write_first(m_size);
    int const error = close_in_system();
    if (error != 0 && takes_text())
        fail(error);
    m_block.reset();
}

// Returns 0, or the value of errno.
int GEN_LOG_FILE::write_to_system(char const *text, std::size_t size)
{
    if (m_file != nullptr)
        return sys_write(sys_descriptor_of(m_file.get()), text, size, WAIT_MSEC).error;
    auto const count = static_cast<std::streamsize>(size);
    errno = 0;
    if (m_named.sputn(text, count) == count && m_named.pubsync() == 0)
        return 0;
    int const error = last_error();
    m_named.drop_text();
    return error;
}

// Returns as write_to_system() does.
int GEN_LOG_FILE::close_in_system()
{
    errno = 0;
    bool const is_closed = m_file != nullptr ? std::fclose(m_file.release()) == 0 : m_named.close() != nullptr;
    return is_closed ? 0 : last_error();
}

void GEN_LOG_FILE::fail(int error)
{
    m_has_failed = true;
    std::string const reason = std::generic_category().message(error);
    mem_msg_local_vinfo("GEN", "cannot write \"%s\": %s", GEN_ARGUMENT_SLOTS(m_name, reason).cursor());
}
