#include "gen_dyn_flag_sys.h"

#include "gen/base/gen_assert.h"
#include "gen_fstream_sys.h"
#include "gen_string_sys.h"
#include "mem_sys.h"

#include <cstring>

namespace {

constexpr unsigned int ALL_BITS = 0xffffffff;

constexpr char SELF_TEST_FILE[] = "gen_dyn_flag_test.txt";

unsigned int bit_of(std::uint64_t slot)
{
    return 1U << slot;
}

std::unique_ptr<char[]> copy_of(char const *name)
{
    std::size_t const size = std::strlen(name) + 1;
    std::unique_ptr<char[]> copy(new char[size]);
    std::memcpy(copy.get(), name, size);
    return copy;
}

template <typename... Arguments>
std::string formatted(char const *format, Arguments... arguments)
{
    std::string text;
    stl_sprintf(&text, format, arguments...);
    return text;
}

void write_usage(std::ostream &out, GEN_DYN_FLAG_MANAGER const &manager)
{
    int used, dirty, clean;
    manager.get_usage_stats(&used, &dirty, &clean);
    out << "used=" << used << " dirty= " << dirty << " clean=" << clean << '\n';
}

} // namespace

GEN_DYN_FLAG_CLEARER::GEN_DYN_FLAG_CLEARER() = default;
GEN_DYN_FLAG_CLEARER::GEN_DYN_FLAG_CLEARER(GEN_DYN_FLAG_CLEARER const &) = default;
GEN_DYN_FLAG_CLEARER &GEN_DYN_FLAG_CLEARER::operator=(GEN_DYN_FLAG_CLEARER const &) = default;
GEN_DYN_FLAG_CLEARER::~GEN_DYN_FLAG_CLEARER() = default;

GEN_DYN_FLAG_MANAGER::GEN_DYN_FLAG_MANAGER(GEN_DYN_FLAG_CLEARER *clearer)
    : m_slot_count(SLOT_COUNT), m_is_dirty{}, m_clearer(clearer)
{
    GEN_ASSERT(m_clearer != nullptr, "m_clearer != 0");
    m_clearer->clear_flags(ALL_BITS);
}

GEN_DYN_FLAG_MANAGER::~GEN_DYN_FLAG_MANAGER() = default;

GEN_DYN_FLAG GEN_DYN_FLAG_MANAGER::create_flag(char const *name)
{
    GEN_ASSERT(name != nullptr, "name != 0");
    std::uint64_t candidate = m_slot_count;
    bool is_clean = false;
    unsigned int dirty_bits = 0;
    // Ends at the first clean slot: the names after it are not compared.
    for (std::uint64_t slot = 0; slot < m_slot_count && !is_clean; ++slot) {
        if (m_names[slot] != nullptr) {
            GEN_ASSERT(gen_strcmp(m_names[slot].get(), name) != 0,
                       formatted("flag '%s' (0x%x) already exists", name, bit_of(slot)).c_str());
            continue;
        }
        candidate = slot;
        is_clean = m_is_dirty[slot] == 0;
        if (!is_clean)
            dirty_bits |= bit_of(slot);
    }
    GEN_ASSERT(candidate < m_slot_count, formatted("too many flags, can't create '%s'", name).c_str());

    m_names[candidate] = copy_of(name);
    if (!is_clean) {
        m_clearer->clear_flags(dirty_bits);
        for (std::uint64_t slot = 0; slot < m_slot_count; ++slot)
            if ((dirty_bits & bit_of(slot)) != 0)
                m_is_dirty[slot] = 0;
    }
    return bit_of(candidate);
}

void GEN_DYN_FLAG_MANAGER::destroy_flag(GEN_DYN_FLAG const &flag)
{
    if (flag.test_if_zero())
        return;
    std::uint64_t slot = 0;
    while (!flag.test(bit_of(slot)))
        ++slot;
    GEN_ASSERT(flag.m_bits == bit_of(slot), formatted("flag 0x%x: not a single bit", flag.m_bits).c_str());
    GEN_ASSERT(slot < m_slot_count, formatted("flag 0x%x: too many bits", flag.m_bits).c_str());
    GEN_ASSERT(m_names[slot] != nullptr, formatted("flag 0x%x not found to delete", flag.m_bits).c_str());
    m_names[slot].reset();
    m_is_dirty[slot] = 1;
}

std::string GEN_DYN_FLAG_MANAGER::get_flag_name(GEN_DYN_FLAG const &flag) const
{
    std::string text = formatted("(0x%x) ", flag.m_bits);
    char const *separator = "";
    for (std::uint64_t slot = 0; slot < m_slot_count; ++slot) {
        if (!flag.test(bit_of(slot)))
            continue;
        text += separator;
        if (m_names[slot] != nullptr)
            text += m_names[slot].get();
        else
            text += m_is_dirty[slot] != 0 ? "DIRTY" : "BAD_FLAG";
        separator = " | ";
    }
    return text;
}

GEN_DYN_FLAG GEN_DYN_FLAG_MANAGER::get_named_flag(char const *name) const
{
    std::uint64_t slot = 0;
    while (slot < m_slot_count && (m_names[slot] == nullptr || gen_strcmp(m_names[slot].get(), name) != 0))
        ++slot;
    GEN_ASSERT(slot < m_slot_count, formatted("couldn't find flag '%s'", name).c_str());
    return bit_of(slot);
}

void GEN_DYN_FLAG_MANAGER::get_usage_stats(int *used, int *dirty, int *clean) const
{
    GEN_ASSERT(used != nullptr && dirty != nullptr && clean != nullptr, "used != 0 && dirty != 0 && clean != 0");
    *used = *dirty = *clean = 0;
    for (std::uint64_t slot = 0; slot < m_slot_count; ++slot) {
        if (m_names[slot] == nullptr)
            ++*clean; // also the slot of a destroyed flag
        else if (m_is_dirty[slot] != 0)
            ++*dirty;
        else
            ++*used;
    }
}

void GEN_DYN_FLAG::test_myself_out(GEN_DYN_FLAG_MANAGER *mgr)
{
    GEN_ASSERT(mgr != nullptr, "mgr!=0");
    std::brisel_ofstream out(SELF_TEST_FILE, std::ios::out, GEN_SHARE_ALL);

    GEN_DYN_FLAG all;
    for (char const *name : {"f1", "f2", "f3", "f4", "f5"})
        all |= mgr->create_flag(name);
    write_usage(out, *mgr);
    out << mgr->get_flag_name(all) << '\n';

    GEN_DYN_FLAG const ends = mgr->get_named_flag("f1") | mgr->get_named_flag("f5");
    out << mgr->get_flag_name(ends) << '\n';
    out << mgr->get_flag_name(all.restricted_to(~ends)) << '\n';

    mgr->destroy_flag(mgr->get_named_flag("f3"));
    write_usage(out, *mgr);
    out << mgr->get_flag_name(all) << '\n';

    for (char const *name : {"f1", "f2", "f4", "f5"})
        mgr->destroy_flag(mgr->get_named_flag(name));
    write_usage(out, *mgr);
    out << mgr->get_flag_name(all) << '\n';
}
