// Templates from the input with fixed arguments. Each slot contains a text that every conversion may read.
#include "gen_string_sys.h"

#include "tests/support/formatmessage_reference.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

// More slots than one template can take: its conversions, of at least two bytes each, and the unused numbers.
constexpr std::size_t SLOTS = 4096;

constexpr std::size_t LARGEST_TEMPLATE = 6000; // more than the conversions have room for
constexpr std::size_t SMALL_TEMPLATE = 2000;   // its conversions fit: each takes at most 3/2 of its insert's length

// A text as narrow characters and as wide ones.
alignas(8) char l_text[16] = "argument";

std::uint64_t l_slots[SLOTS];

void require(bool condition, char const *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

// Fields of thousands of characters find no more errors than smaller ones, and are slow.
bool has_wide_field(std::string const &text)
{
    std::size_t digits = 0;
    for (char c : text) {
        digits = c >= '0' && c <= '9' ? digits + 1 : 0;
        if (digits > 3)
            return true;
    }
    return false;
}

// A copy that has no byte after its terminator, so that the sanitizer finds a read beyond it.
std::unique_ptr<char[]> exact_copy(std::string const &text)
{
    std::unique_ptr<char[]> copy(new char[text.size() + 1]);
    std::memcpy(copy.get(), text.c_str(), text.size() + 1);
    return copy;
}

void check_arguments()
{
    require(std::memcmp(l_text, "argument\0\0\0\0\0\0\0", sizeof l_text) == 0, "an argument was written to");
    for (std::uint64_t slot : l_slots)
        require(slot == reinterpret_cast<std::uintptr_t>(l_text), "a slot was written to");
}

void check_core(char const *format, std::string const &text)
{
    std::string again = "front";
    std::uint32_t const length = gen_formatmessage(again, format, reinterpret_cast<char *>(l_slots));
    require(length == again.size(), "the result is not the length");
    require(again == "front" + text, "the text is not appended");

    std::string const source = format;
    if (source.size() <= SMALL_TEMPLATE)
        require(text == FormatMessageReference(source, reinterpret_cast<char *>(l_slots)).text(),
                "the text is not that of the plain scan");
    if (source.find('%') == std::string::npos && source.find("\n\r") == std::string::npos)
        require(text == source, "a text without inserts is changed");
    std::size_t const last = source.find_last_not_of('%');
    std::size_t const signs = last == std::string::npos ? source.size() : source.size() - last - 1;
    if (signs == source.size() && signs > 0)
        require(text == std::string((signs + 1) / 2, '%'), "per-cent signs are not halved");
}

// Embedded null characters come from %c alone; the text after the first one is not copied.
void check_buffer(char const *format, std::string const &text, unsigned long size)
{
    std::unique_ptr<char[]> const buffer(new char[size]);
    std::memset(buffer.get(), '~', size);
    std::uint32_t const length = gen_formatmessage(FORMAT_MESSAGE_FROM_STRING, format, 0, 0, buffer.get(), size,
                                                   reinterpret_cast<char *>(l_slots));
    require(length == std::min<std::size_t>(text.size(), size - 1), "the buffer's text has a wrong length");
    std::string expected = text.substr(0, length).c_str();
    expected.resize(length);
    require(std::memcmp(buffer.get(), expected.data(), length) == 0, "the buffer's text is another one");
    require(buffer[length] == (text.empty() ? '~' : '\0'), "the buffer's text has a wrong end");
}

void check_verbatim(char const *format)
{
    char *block = nullptr;
    std::uint32_t const length =
        gen_formatmessage(FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_ALLOCATE_BUFFER,
                          format, 0, 0, reinterpret_cast<char *>(&block), 0, nullptr);
    require(length == std::strlen(format), "a verbatim text has a wrong length");
    require((block == nullptr) == (length == 0), "a block belongs to a text that is not empty");
    require(length == 0 || std::strcmp(block, format) == 0, "a verbatim text is changed");
    std::free(block);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size);

int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    if (size == 0)
        return 0;
    // The first byte is the size of the buffer.
    unsigned long const buffer_size = data[0] + 1UL;
    std::string source(reinterpret_cast<char const *>(data) + 1, size - 1);
    source.resize(std::strlen(source.c_str()));
    if (source.size() > LARGEST_TEMPLATE || has_wide_field(source))
        return 0;

    std::fill(std::begin(l_slots), std::end(l_slots), reinterpret_cast<std::uintptr_t>(l_text));
    std::unique_ptr<char[]> const format = exact_copy(source);
    std::string text;
    gen_formatmessage(text, format.get(), reinterpret_cast<char *>(l_slots));
    check_core(format.get(), text);
    check_buffer(format.get(), text, buffer_size);
    check_verbatim(format.get());
    check_arguments();
    return 0;
}
