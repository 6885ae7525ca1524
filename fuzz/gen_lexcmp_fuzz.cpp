// The order of names. The input is two names, separated by the first line feed. They are compared as they are, and with
// their line feeds replaced by null characters.
#include "gen_string_sys.h"

#include "fuzz_target.h"

#include "tests/support/lexcmp_reference.h"

namespace {

using Name = std::vector<char>;

int sign_of(int value)
{
    return (value > 0) - (value < 0);
}

// Compares the bytes of two buffers that end with the names.
template <int (*COMPARE)(char const *, std::uint64_t, char const *, std::uint64_t)>
int compare(Name const &first, Name const &second)
{
    return COMPARE(first.data(), first.size(), second.data(), second.size());
}

template <int (*COMPARE)(char const *, std::uint64_t, char const *, std::uint64_t)>
void check_order(Name const &first, Name const &second)
{
    int const forward = compare<COMPARE>(first, second);
    require(forward == -compare<COMPARE>(second, first));
    require(compare<COMPARE>(first, first) == 0);
    require(compare<COMPARE>(second, second) == 0);

    // A name, and the same name with more text after it.
    Name longer = first;
    longer.push_back('1');
    require(compare<COMPARE>(first, longer) < 0);

    // The first half of a name is not above the whole name, and below each name that is above the whole one.
    Name const half(first.begin(), first.begin() + static_cast<std::ptrdiff_t>(first.size() / 2));
    require(compare<COMPARE>(half, first) <= 0);
    if (forward < 0)
        require(compare<COMPARE>(half, second) < 0);
}

void check_definition(std::string const &first, std::string const &second)
{
    require(gen_lexcmp(first, second) == lexcmp_reference::lexcmp(first, second, /*folds=*/false));
    require(gen_ilexcmp(first, second) == lexcmp_reference::lexcmp(first, second, /*folds=*/true));
    require(gen_signed_lexcmp(first, second) == lexcmp_reference::signed_lexcmp(first, second));
}

// The results of both orders add up to 0 modulo 2^32. Their signs may be equal: if the numbers differ by exactly 2^31.
void check_signed(std::string const &first, std::string const &second)
{
    std::uint32_t const forward = static_cast<std::uint32_t>(gen_signed_lexcmp(first, second));
    std::uint32_t const backward = static_cast<std::uint32_t>(gen_signed_lexcmp(second, first));
    require(forward + backward == 0);
    require(gen_signed_lexcmp(first, first) == 0);
}

void check_plain(char const *first, char const *second)
{
    require(gen_strcmp(first, second) == -gen_strcmp(second, first));
    require(gen_stricmp(first, second) == -gen_stricmp(second, first));
    require(gen_lexcmp(first, second) == -gen_lexcmp(second, first));
    require(gen_ilexcmp(first, second) == -gen_ilexcmp(second, first));
    if (gen_strcmp(first, second) == 0)
        require(gen_stricmp(first, second) == 0 && gen_lexcmp(first, second) == 0);
    require((gen_strcmp(first, second) == 0) == (gen_lexcmp(first, second) == 0));
    require((gen_stricmp(first, second) == 0) == (gen_ilexcmp(first, second) == 0));
    require(sign_of(gen_strnicmp(first, second, 0)) == sign_of(gen_stricmp(first, second)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    std::uint8_t const *const end = data + size;
    std::uint8_t const *const border = std::find(data, end, '\n');
    Name first(data, border);
    Name second(border == end ? end : border + 1, end);
    std::replace(second.begin(), second.end(), '\n', '\0');

    check_order<gen_lexcmp>(first, second);
    check_order<gen_ilexcmp>(first, second);
    check_definition({first.begin(), first.end()}, {second.begin(), second.end()});
    check_signed({first.begin(), first.end()}, {second.begin(), second.end()});
    first.push_back('\0');
    second.push_back('\0');
    check_plain(first.data(), second.data());
    return 0;
}
