// A text that is too long for the function. On Windows it would need all its memory.
#include "gen_string_sys.h"

#include <boost/numeric/conversion/converter_policies.hpp>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include <sys/mman.h>

namespace {

// 2^31 characters and a terminator that can't be written to: one piece of a file, mapped again and again.
class LongText
{
public:
    LongText()
    {
        std::FILE *const file = std::tmpfile();
        std::string const characters(CHUNK, 'x');
        bool is_made =
            file != nullptr && std::fwrite(characters.data(), 1, CHUNK, file) == CHUNK && std::fflush(file) == 0;
        m_place = mmap(nullptr, SIZE, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        is_made = is_made && m_place != MAP_FAILED;
        for (std::size_t at = 0; is_made && at < LENGTH; at += CHUNK)
            is_made = mmap(text() + at, CHUNK, PROT_READ, MAP_SHARED | MAP_FIXED, fileno(file), 0) != MAP_FAILED;
        if (file != nullptr)
            std::fclose(file);
        EXPECT_TRUE(is_made) << std::strerror(errno);
    }
    ~LongText() { munmap(m_place, SIZE); }
    LongText(LongText const &) = delete;
    LongText &operator=(LongText const &) = delete;

    char *text() const { return static_cast<char *>(m_place); }

private:
    static constexpr std::size_t LENGTH = std::size_t{1} << 31;
    static constexpr std::size_t CHUNK = std::size_t{1} << 24;
    static constexpr std::size_t SIZE = LENGTH + CHUNK; // the last piece is zeros

    void *m_place;
};

} // namespace

TEST(GenProcessEscapedQuotes, ThrowsOnATextTooLongForAnInt)
{
    LongText const text;
    ASSERT_FALSE(HasFailure());
    EXPECT_THROW(gen_process_escaped_quotes(text.text()), boost::numeric::positive_overflow);
}
