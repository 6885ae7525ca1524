// The table of gen_find_file_cache_assisted(). A hash table of its own, since its hash, its first 8 buckets and its
// growth are required. Entries stay where they are when the table grows; only the lists of the buckets are made anew.
//
//     name      hash_of(name)            bucket of 8    bucket of 16
//     "a"       97                       1              1
//     "ab"      97 * 17 + 98 = 1747      3              3
//     "i"       105                      1              9
//
// In 8 buckets "i" and "a" share the list of bucket 1, newest first. The ninth entry doubles the buckets, and from then
// on the two lie in lists of their own.
#ifndef GEN_PATH_SEARCH_CACHE_H
#define GEN_PATH_SEARCH_CACHE_H

#include "fio_sys.h"

#include <cstdint>
#include <deque>
#include <string>
#include <utility>
#include <vector>

/// Paths by names, which are compared by length and bytes.
class GEN_FIND_FILE_CACHE
{
public:
    /// Computed over the bytes before the first zero: for each of them h = h * 17 + byte, where a byte is signed.
    static std::uint64_t hash_of(std::string const &name)
    {
        std::uint64_t hash = 0;
        for (char const *byte = name.c_str(); *byte != '\0'; ++byte)
            hash = hash * 17 + static_cast<std::uint64_t>(static_cast<signed char>(*byte));
        return hash;
    }

    /// The path of a name, valid as long as the table; null if the table doesn't contain the name.
    FIO_PATH const *find(std::string const &name) const
    {
        std::uint64_t const hash = hash_of(name);
        for (Entry const *entry = m_buckets[index_of(hash)]; entry != nullptr; entry = entry->next)
            if (entry->hash == hash && entry->name == name)
                return &entry->path;
        return nullptr;
    }

    /// Adds a name that the table doesn't contain.
    void add(std::string const &name, FIO_PATH const &path)
    {
        if (m_entries.size() == m_buckets.size())
            grow();
        m_entries.push_back({hash_of(name), nullptr, name, path});
        link(m_entries.back());
    }

    std::size_t bucket_count() const { return m_buckets.size(); }

private:
    struct Entry
    {
        std::uint64_t hash;
        Entry *next; // in the bucket
        std::string name;
        FIO_PATH path;
    };

    // The count of buckets is a power of two.
    std::size_t index_of(std::uint64_t hash) const { return hash & (m_buckets.size() - 1); }

    void link(Entry &entry)
    {
        Entry *&bucket = m_buckets[index_of(entry.hash)];
        entry.next = std::exchange(bucket, &entry);
    }

    void grow()
    {
        m_buckets.assign(m_buckets.size() * 2, nullptr);
        for (Entry &entry : m_entries)
            link(entry);
    }

    std::deque<Entry> m_entries;
    std::vector<Entry *> m_buckets = std::vector<Entry *>(8); // never fewer than entries
};

#endif
