// A hash table that can be used inside operators new and delete: its memory comes from the plain heap, which isn't
// counted, and a lack of memory is a result and not an exception.
//
// Open addressing with linear probing: an entry lies at the first place of its key, or else in the first place after it
// that was free. The entries between two free places are a run. For example, with 8 places, where A and B both have the
// first place 2, and C has the first place 3:
//
//     place          0    1    2    3    4    5
//     add A, B, C              A    B    C              B is looked for at 2, 3; C at 3, 4
//     remove A                 -    B    C              a hole: B would not be found from 2 on
//                              B    -    C              B moves to the hole, since 2 is one of its places
//                              B    C    -              C moves too, since the hole is not before its first place
//
// The table doubles when it is two thirds full, so that runs stay short.
#ifndef MEM_HASH_TABLE_H
#define MEM_HASH_TABLE_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>

/// Entry is a plain structure with a member `key` of 64 bits, which is 0 in a free place. All other members of a new
/// entry are 0. Growing copies entries.
template <typename Entry>
class MEM_HASH_TABLE
{
public:
    /// The entry of a key other than 0; null if there is none. Valid until the table changes.
    Entry *find(std::uint64_t key) const
    {
        if (m_entries == nullptr)
            return nullptr;
        Entry &entry = m_entries[slot_of(key)];
        return entry.key == key ? &entry : nullptr;
    }

    /// The entry of a key other than 0, added if there is none; null if there is no memory.
    Entry *find_or_add(std::uint64_t key)
    {
        if (Entry *const entry = find(key))
            return entry;
        if (m_count >= capacity() / 3 * 2 && !grow())
            return nullptr;
        Entry &entry = m_entries[slot_of(key)];
        entry.key = key;
        ++m_count;
        return &entry;
    }

    void remove(Entry *entry)
    {
        // The later entries of the run fill the hole, except those that would lie before their first place.
        std::size_t hole = static_cast<std::size_t>(entry - m_entries);
        for (std::size_t i = next(hole); m_entries[i].key != 0; i = next(i)) {
            std::size_t const wanted = first_slot_of(m_entries[i].key);
            if (((i - wanted) & (capacity() - 1)) >= ((i - hole) & (capacity() - 1))) {
                m_entries[hole] = m_entries[i];
                hole = i;
            }
        }
        m_entries[hole] = Entry();
        --m_count;
    }

    void clear()
    {
        std::free(m_entries);
        m_entries = nullptr;
        m_bits = 0;
        m_count = 0;
    }

private:
    std::size_t capacity() const { return m_entries == nullptr ? 0 : std::size_t{1} << m_bits; }
    std::size_t next(std::size_t place) const { return (place + 1) & (capacity() - 1); }

    // The high bits of the product, which depend on all bits of the key.
    std::size_t first_slot_of(std::uint64_t key) const
    {
        constexpr std::uint64_t GOLDEN = 0x9e3779b97f4a7c15U; // 2^64 over the golden ratio
        return static_cast<std::size_t>((key * GOLDEN) >> (64 - m_bits));
    }

    // The place of the key, or the free place where it would be added.
    std::size_t slot_of(std::uint64_t key) const
    {
        std::size_t place = first_slot_of(key);
        while (m_entries[place].key != 0 && m_entries[place].key != key)
            place = next(place);
        return place;
    }

    bool grow()
    {
        constexpr unsigned FIRST_BITS = 10;
        MEM_HASH_TABLE larger;
        larger.m_bits = m_entries == nullptr ? FIRST_BITS : m_bits + 1;
        larger.m_entries = static_cast<Entry *>(std::calloc(std::size_t{1} << larger.m_bits, sizeof(Entry)));
        if (larger.m_entries == nullptr)
            return false;
        for (std::size_t i = 0; i < capacity(); ++i)
            if (m_entries[i].key != 0)
                larger.m_entries[larger.slot_of(m_entries[i].key)] = m_entries[i];
        std::swap(m_entries, larger.m_entries);
        m_bits = larger.m_bits;
        std::free(larger.m_entries);
        return true;
    }

    Entry *m_entries = nullptr;
    unsigned m_bits = 0;
    std::size_t m_count = 0;
};

#endif
