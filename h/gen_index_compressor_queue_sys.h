// A queue that merges names with consecutive indices while they pass through it: a[0], a[1], a[2] become a[0:2]. Names
// are added at the back and compared with the last entry only; nothing is sorted. Entries that can't change any more
// are final and can be taken at the front while names are still added. A queue belongs to one thread.
//
// How entries merge, for the four names of a 2 x 2 array and a name after them:
//
//     added name   entries afterwards     reason
//     a[0][0]      a[0][0]                the queue was empty
//     a[0][1]      a[0][0:1]              only the second index differs, and 1 follows 0: the two merge
//     a[1][0]      a[0][0:1], a[1][0]     both indices differ (0 and 1, 0:1 and 0): no merge
//     a[1][1]      a[0:1][0:1]            first a[1][0] and a[1][1] merge into a[1][0:1]; now the two last entries
//                                         differ in the first index only, and 1 follows 0: they merge too
//     b            a[0:1][0:1], b         the texts differ outside their indices: a[0:1][0:1] is final
//
// The two texts are compared from left to right, character by character, and index by index where both have an index.
// The first index that differs is where they would merge: the low end of the added index must be the high end of the
// existing index plus 1. If that fails, or if a second index differs, they don't merge. The comparison still goes on to
// the end, to find out whether the texts are compatible, that is, differ in nothing but their indices: the entry
// a[0][0:1] above must not become final when a[1][0] is added, since it merges later. It stays open because it is the
// result of a merge and is compatible with a[1][0].
#ifndef GEN_INDEX_COMPRESSOR_QUEUE_SYS_H
#define GEN_INDEX_COMPRESSOR_QUEUE_SYS_H

#include "err_sys.h"
#include "zel_export_sys.h"

#include <cstdint>
#include <cstring>
#include <string>

/// Merges adjacent names with consecutive indices.
///
/// The usual loop takes the final entries after each name, and the rest at the end:
///
///     GEN_INDEX_COMPRESSOR_QUEUE queue;
///     for (std::string const &name : names) {
///         for (queue.push_back(name); queue.ready(); queue.pop_front())
///             write(queue.front());
///     }
///     for (; !queue.empty(); queue.pop_front())
///         write(queue.front());
///
/// An index is one number, or two numbers with a colon between them, in square brackets; some types of queue accept it
/// without brackets too. A number may be negative; its magnitude is at most 2147483639, since a digit is appended only
/// to a number below INT_MAX / 10 (214748364). The order within a range has no meaning: [3:0] is the range from 0 to 3.
/// Two names merge into one entry if they differ in one index only and the second name's index begins at the number
/// after the end of the first one's:
///
/// | type     | pushed                             | entries                                                     |
/// |----------|------------------------------------|-------------------------------------------------------------|
/// | required | a[0], a[1], a[2]                   | a[0:2]                                                      |
/// | required | a[0][0], a[0][1], a[1][0], a[1][1] | a[0:1][0:1]                                                 |
/// | required | a[0:3], a[4:7]                     | a[0:7]                                                      |
/// | required | a[1], a[0]                         | a[1], a[0]: no merge over a gap, a repetition or a step down |
/// | required | a[0][0], a[1][1]                   | a[0][0], a[1][1]: only one index may differ                 |
/// | required | a1, a2                             | a1, a2                                                      |
/// | optional | a1, a2                             | a[1:2]                                                      |
/// | required | a[0]b, a[1]                        | a[0:1]: the b is lost                                       |
/// | required | a[0], a[1]b                        | a[0:1]b                                                     |
///
/// The last two rows show that a comparison ends at the end of the shorter name. If names may end directly after an
/// index while others continue there, don't give them to the same queue. The text of a merged entry is that of the
/// later name, with the merged index in brackets and without leading zeros.
///
/// Every comparison ends at the first null character of a name.
///
/// The members are defined below and compiled into the caller; the library exports a copy of each too.
class GEN_INDEX_COMPRESSOR_QUEUE
{
public:
    /// Which texts count as an index.
    enum BRACKET_TYPE
    {
        BRACKET_REQUIRED = 0,            ///< only numbers in brackets
        BRACKET_OPTIONAL = 1,            ///< also numbers without brackets
        BRACKET_OPTIONAL_AFTER_TILDE = 2 ///< also numbers without brackets between a "~" and the next "|" or ":"
    };

    /// Makes an empty queue.
    ///
    /// @param error_check  whether the destructor requires an empty queue
    /// @param type         which texts count as an index
    GEN_API explicit GEN_INDEX_COMPRESSOR_QUEUE(bool error_check = true, BRACKET_TYPE type = BRACKET_REQUIRED);

    /// The copy shares the entries with `other`. After one of the two has changed, the other may only be assigned to.
    /// With error_check each of them must be empty, or assigned from an empty queue, before it is destroyed.
    GEN_API GEN_INDEX_COMPRESSOR_QUEUE(GEN_INDEX_COMPRESSOR_QUEUE const &other);
    GEN_API GEN_INDEX_COMPRESSOR_QUEUE &operator=(GEN_INDEX_COMPRESSOR_QUEUE const &other);

    /// Releases no entries; call clear() before. With error_check a queue that is not empty is the internal error
    /// "!m_error_check || m_head == NULL && m_tail == NULL".
    GEN_API ~GEN_INDEX_COMPRESSOR_QUEUE();

    /// Adds a name at the back and merges it with the last entry if possible. The time is linear in the length of the
    /// names that are compared.
    ///
    /// @param name  any text. Brackets that contain no index are compared as text. An index merges only with an index
    ///
    /// If the name doesn't merge, the entry before it becomes final, unless that entry is the result of a merge and the
    /// two differ only in their indices: such an entry stays open, since its next dimension may still merge.
    GEN_API void push_back(std::string const &name);

    /// Whether the queue contains a final entry, so that the front can be taken.
    ///
    /// If expand_front() has expanded a final entry, the result stays true from then on, even for an empty queue. A
    /// caller of expand_front() therefore has to use empty().
    GEN_API bool ready() const;

    GEN_API bool empty() const;

    /// The entry at the front, valid until the queue changes. An empty queue is the internal error "m_head != NULL".
    GEN_API std::string const &front() const;

    /// Expands the entry at the front until the front contains no range, and returns the front, valid until the queue
    /// changes. An empty queue is the internal error "m_head != NULL".
    ///
    ///     a[0:2]      -> a[0], a[1], a[2]             returns a[0]
    ///     a[0:1][0:1] -> a[0][0], a[0][1], a[1][0:1]  returns a[0][0]
    ///     a[5]        -> a[5]                         returns a[5]
    ///
    /// The first range of the front is replaced by one entry for each of its values, in rising order; this is repeated
    /// for the new front. Only ranges in brackets are expanded, for every type of queue.
    GEN_API std::string const &expand_front();

    /// Removes the entry at the front, if there is one.
    GEN_API void pop_front();

    /// Removes all entries.
    GEN_API void clear();

private:
    struct Node
    {
        Node *m_next; // towards the back
        Node *m_prev; // towards the front
        std::string m_name;
        bool m_merged; // a pushed name was merged into it
        bool m_ready;  // final; counted in m_ready_count
    };

    // A range in brackets within a name.
    struct RangeText
    {
        std::string::size_type m_begin; // position of the opening bracket
        std::string::size_type m_end;   // position after the closing bracket
        int m_range[2];
    };

    // An index and its position in a text.
    struct Index
    {
        int m_low;
        int m_high;
        char const *m_low_end;    // after the first number
        char const *m_high_begin; // the last number, which may be the first
        char const *m_end;        // after the index
        bool m_plain;             // spelled as write_merged() would write it
    };

    // The place at which two texts merge.
    struct MergePoint
    {
        bool m_ok;                      // no reason against the merge was found
        bool m_merged;                  // an index at which to merge was found
        std::string::size_type m_equal; // length of the equal text before the comparison begins
        char const *m_begin;            // position of the index in the incoming text
        Index m_incoming;
        Index m_existing;
    };

    GEN_API bool merge(std::string &existing, std::string const &incoming, bool &compatible);
    // In these two `ch` is the current character of a text and `cursor` points to the next one. On success both move
    // past the index or number; scan_int() also moves them past a number that is out of range. range[0] is the smaller
    // number of the index and range[1] the larger one.
    GEN_API bool scan_index(char &ch, char const *&cursor, int *const range) const;
    GEN_API bool scan_int(char &ch, char const *&cursor, int &value) const;

    inline bool read_index(char const *at, Index &index) const;
    inline static bool read_number(char const *&at, int &value, bool &plain);
    // The value of a digit; more than 9 for any other character.
    static unsigned digit_of(char ch) { return static_cast<unsigned>(ch - '0'); }
    static bool is_digit(char ch) { return digit_of(ch) <= 9; }
    bool starts_index(char ch) const { return ch == '[' || (m_bare_index_allowed && is_digit(ch)); }
    inline void update_bare_index_allowed(char ch);
    inline std::string::size_type walk_start(std::string const &existing, std::string const &incoming) const;
    inline static std::string::size_type first_difference(std::string const &existing, std::string const &incoming);
    inline bool step_index(char const *&at1, char const *&at2, MergePoint &point) const;
    inline static void note_difference(MergePoint &point, char const *begin, Index const &incoming,
                                       Index const &existing);
    inline static void write_merged(std::string &existing, std::string const &incoming, MergePoint const &point);

    inline void merge_back();
    inline void append(std::string const &name);
    inline void unlink(Node *node);
    inline bool find_range(std::string const &name, RangeText &found) const;
    inline void split_front(RangeText const &at);

    bool m_error_check;
    Node *m_head;
    Node *m_tail;
    std::int32_t m_ready_count;
    bool m_bracket_optional;
    bool m_bracket_after_tilde;
    bool m_bare_index_allowed; // at the current position of a comparison
};

inline GEN_INDEX_COMPRESSOR_QUEUE::GEN_INDEX_COMPRESSOR_QUEUE(bool error_check, BRACKET_TYPE type)
    : m_error_check(error_check), m_head(nullptr), m_tail(nullptr), m_ready_count(0),
      m_bracket_optional(type == BRACKET_OPTIONAL), m_bracket_after_tilde(type == BRACKET_OPTIONAL_AFTER_TILDE),
      m_bare_index_allowed(false)
{
}

inline GEN_INDEX_COMPRESSOR_QUEUE::GEN_INDEX_COMPRESSOR_QUEUE(GEN_INDEX_COMPRESSOR_QUEUE const &) = default;

inline GEN_INDEX_COMPRESSOR_QUEUE &GEN_INDEX_COMPRESSOR_QUEUE::operator=(GEN_INDEX_COMPRESSOR_QUEUE const &) = default;

inline GEN_INDEX_COMPRESSOR_QUEUE::~GEN_INDEX_COMPRESSOR_QUEUE()
{
    if (m_error_check && (m_head != nullptr || m_tail != nullptr))
        err_report_internal_error("!m_error_check || m_head == NULL && m_tail == NULL", "GEN",
                                  "h/gen_index_compressor_queue_sys.h", __LINE__);
}

// Exported members are defined before their first use: the Windows compiler then uses the definition instead of the
// imported function.

inline bool GEN_INDEX_COMPRESSOR_QUEUE::ready() const
{
    return m_ready_count != 0;
}

inline bool GEN_INDEX_COMPRESSOR_QUEUE::empty() const
{
    return m_head == nullptr;
}

// Looks for the one index at which `incoming` continues `existing`, and replaces `existing` by the merged text; false
// if the texts don't merge. `compatible` receives whether the texts differ only in their indices. The comparison goes
// on after a difference that forbids the merge, because `compatible` is not known before the end.
inline bool GEN_INDEX_COMPRESSOR_QUEUE::merge(std::string &existing, std::string const &incoming, bool &compatible)
{
    compatible = true;
    m_bare_index_allowed = m_bracket_optional;
    if (incoming.empty())
        return false;

    std::string::size_type const start = walk_start(existing, incoming);
    MergePoint point = {true, false, start, nullptr, {}, {}};
    char const *at1 = incoming.c_str() + start;
    char const *at2 = existing.c_str() + start;
    while (*at1 != '\0' && *at2 != '\0') {
        update_bare_index_allowed(*at2);
        if (starts_index(*at1)) {
            if (!step_index(at1, at2, point))
                return false;
        } else {
            compatible = *at1++ == *at2++;
            if (!compatible)
                return false;
        }
    }
    if (!point.m_ok || !point.m_merged)
        return false;
    write_merged(existing, incoming, point);
    return true;
}

inline void GEN_INDEX_COMPRESSOR_QUEUE::push_back(std::string const &name)
{
    if (empty()) {
        append(name);
        return;
    }
    bool compatible;
    if (merge(m_tail->m_name, name, compatible)) {
        m_tail->m_merged = true;
        merge_back();
        return;
    }
    if (!m_tail->m_ready && (!m_tail->m_merged || !compatible)) {
        m_tail->m_ready = true;
        ++m_ready_count;
    }
    append(name);
}

inline std::string const &GEN_INDEX_COMPRESSOR_QUEUE::front() const
{
    if (m_head == nullptr)
        err_report_internal_error("m_head != NULL", "GEN", "h/gen_index_compressor_queue_sys.h", __LINE__);
    return m_head->m_name;
}

inline std::string const &GEN_INDEX_COMPRESSOR_QUEUE::expand_front()
{
    if (m_head == nullptr)
        err_report_internal_error("m_head != NULL", "GEN", "h/gen_index_compressor_queue_sys.h", __LINE__);
    RangeText found;
    while (find_range(m_head->m_name, found))
        split_front(found);
    return m_head->m_name;
}

inline void GEN_INDEX_COMPRESSOR_QUEUE::pop_front()
{
    if (m_head == nullptr)
        return;
    if (m_head->m_ready)
        --m_ready_count;
    unlink(m_head);
}

inline void GEN_INDEX_COMPRESSOR_QUEUE::clear()
{
    while (!empty())
        pop_front();
}

// The position at which the comparison may start, because the texts before it are equal and the comparison from the
// beginning would get there without a difference. If only numbers in brackets count, it is the last opening bracket up
// to the first difference, or the difference itself if there is no bracket: no step over equal text skips a bracket.
inline std::string::size_type GEN_INDEX_COMPRESSOR_QUEUE::walk_start(std::string const &existing,
                                                                     std::string const &incoming) const
{
    if (m_bracket_optional || m_bracket_after_tilde)
        return 0;
    std::string::size_type const difference = first_difference(existing, incoming);
    std::string::size_type at = difference;
    while (incoming[at] != '[') {
        if (at == 0)
            return difference;
        --at;
    }
    return at;
}

// Length of the common beginning of both texts, up to a null character.
inline std::string::size_type GEN_INDEX_COMPRESSOR_QUEUE::first_difference(std::string const &existing,
                                                                           std::string const &incoming)
{
    std::string::size_type const size = existing.size() < incoming.size() ? existing.size() : incoming.size();
    std::string::size_type at = 0;
    for (; size - at >= sizeof(std::uint64_t); at += sizeof(std::uint64_t)) {
        std::uint64_t word1;
        std::uint64_t word2;
        std::memcpy(&word1, incoming.data() + at, sizeof word1);
        std::memcpy(&word2, existing.data() + at, sizeof word2);
        // Not 0 if and only if a byte of the word is 0.
        std::uint64_t const zeros = (word1 - 0x0101010101010101) & ~word1 & 0x8080808080808080;
        if (((word1 ^ word2) | zeros) != 0)
            break;
    }
    while (at < size && incoming[at] == existing[at] && incoming[at] != '\0')
        ++at;
    return at;
}

// Notes whether a number without brackets counts from here on: under BRACKET_OPTIONAL_AFTER_TILDE it depends on the
// characters before it, under the other types it is always the same.
inline void GEN_INDEX_COMPRESSOR_QUEUE::update_bare_index_allowed(char ch)
{
    if (!m_bracket_after_tilde)
        return;
    if (ch == '~')
        m_bare_index_allowed = true;
    else if (ch == '|' || ch == ':')
        m_bare_index_allowed = m_bracket_optional;
}

// Moves past an index in both texts, or past an opening bracket that begins no index in one of them, together with
// the digits after it that are equal. False if the comparison can't go on: an index or an opening bracket in one text
// only, or a number without brackets that is out of range or lacks its second number.
inline bool GEN_INDEX_COMPRESSOR_QUEUE::step_index(char const *&at1, char const *&at2, MergePoint &point) const
{
    Index index1;
    Index index2;
    if (read_index(at1, index1) && read_index(at2, index2)) {
        if (index1.m_low != index2.m_low || index1.m_high != index2.m_high)
            note_difference(point, at1, index1, index2);
        at1 = index1.m_end;
        at2 = index2.m_end;
        return true;
    }
    if (*at1 != '[' || *at2 != '[')
        return false;
    do {
        ++at1;
        ++at2;
    } while (is_digit(*at1) && *at1 == *at2);
    return true;
}

// Records that the indices at a position differ; `begin` is the position of the incoming one.
inline void GEN_INDEX_COMPRESSOR_QUEUE::note_difference(MergePoint &point, char const *begin, Index const &incoming,
                                                        Index const &existing)
{
    if (point.m_merged || existing.m_high + 1 != incoming.m_low) {
        point.m_ok = false;
        point.m_merged = false;
        return;
    }
    point.m_merged = true;
    point.m_begin = begin;
    point.m_incoming = incoming;
    point.m_existing = existing;
}

// Writes the incoming text, with the merged range in place of its index, to `existing`.
inline void GEN_INDEX_COMPRESSOR_QUEUE::write_merged(std::string &existing, std::string const &incoming,
                                                     MergePoint const &point)
{
    char const *const begin = incoming.c_str();
    char const *const end = begin + incoming.size();
    // Fast path for long runs: only the high number of `existing` has to be replaced.
    if (point.m_begin == begin + point.m_equal && point.m_existing.m_plain && point.m_incoming.m_plain) {
        char const *const high = point.m_incoming.m_high_begin;
        std::string::size_type const low_size =
            static_cast<std::string::size_type>(point.m_existing.m_low_end - existing.c_str());
        std::string::size_type const high_size = static_cast<std::string::size_type>(end - high);
        existing.resize(low_size + 1 + high_size);
        existing[low_size] = ':';
        std::memcpy(&existing[low_size + 1], high, high_size);
        return;
    }
    std::string const range =
        '[' + std::to_string(point.m_existing.m_low) + ':' + std::to_string(point.m_incoming.m_high) + ']';
    existing.assign(begin, point.m_begin);
    existing.append(range);
    existing.append(point.m_incoming.m_end, end);
}

inline bool GEN_INDEX_COMPRESSOR_QUEUE::scan_index(char &ch, char const *&cursor, int *const range) const
{
    Index index = {};
    bool const good = read_index(cursor - 1, index);
    range[0] = index.m_low;
    range[1] = index.m_high;
    if (good) {
        ch = *index.m_end;
        cursor = index.m_end + 1;
    }
    return good;
}

inline bool GEN_INDEX_COMPRESSOR_QUEUE::scan_int(char &ch, char const *&cursor, int &value) const
{
    char const *at = cursor - 1;
    bool plain = true;
    bool const good = read_number(at, value, plain);
    ch = *at;
    cursor = at + 1;
    return good;
}

// Reads one number, or two with a colon between them: in brackets, or without if m_bare_index_allowed. False if there
// is no index at this position; `index` may then be partly filled.
inline bool GEN_INDEX_COMPRESSOR_QUEUE::read_index(char const *at, Index &index) const
{
    bool const bracketed = *at == '[';
    if (!bracketed && !m_bare_index_allowed)
        return false;
    if (bracketed)
        ++at;

    index.m_plain = bracketed;
    index.m_high_begin = at;
    bool good = read_number(at, index.m_low, index.m_plain);
    index.m_high = index.m_low;
    index.m_low_end = at;
    if (good && *at == ':') {
        index.m_high_begin = ++at;
        good = read_number(at, index.m_high, index.m_plain);
        if (index.m_high < index.m_low) {
            int const low = index.m_high;
            index.m_high = index.m_low;
            index.m_low = low;
            index.m_plain = false;
        }
    }
    index.m_end = bracketed ? at + 1 : at;
    return good && (*at == ']') == bracketed;
}

// Reads one number and moves `at` past its digits. False if there is no digit, or if the number is too large. `plain`
// becomes false if std::to_string() would spell the number in another way.
inline bool GEN_INDEX_COMPRESSOR_QUEUE::read_number(char const *&at, int &value, bool &plain)
{
    bool const negative = *at == '-' && is_digit(at[1]);
    if (negative)
        ++at;
    char const *const digits = at;
    bool fits = true;
    int sum = 0;
    for (unsigned digit = digit_of(*at); digit <= 9; digit = digit_of(*++at)) {
        if (sum >= 214748364) // INT_MAX / 10: not every further digit would fit
            fits = false;
        else
            sum = sum * 10 + static_cast<int>(digit);
    }
    value = negative ? -sum : sum;
    if (*digits == '0' && (negative || at - digits != 1))
        plain = false;
    return fits && at != digits;
}

// Merges the last entry into the one before it, as long as that is possible; this merges further dimensions.
inline void GEN_INDEX_COMPRESSOR_QUEUE::merge_back()
{
    bool compatible;
    while (m_tail->m_prev != nullptr && merge(m_tail->m_prev->m_name, m_tail->m_name, compatible)) {
        if (m_tail->m_ready) {
            if (m_tail->m_prev->m_ready)
                --m_ready_count;
            else
                m_tail->m_prev->m_ready = true;
        }
        unlink(m_tail);
    }
}

inline void GEN_INDEX_COMPRESSOR_QUEUE::append(std::string const &name)
{
    Node *const node = new Node{nullptr, m_tail, name, false, false};
    (m_tail == nullptr ? m_head : m_tail->m_next) = node;
    m_tail = node;
}

// Removes an entry from the list and deletes it.
inline void GEN_INDEX_COMPRESSOR_QUEUE::unlink(Node *node)
{
    (node->m_prev == nullptr ? m_head : node->m_prev->m_next) = node->m_next;
    (node->m_next == nullptr ? m_tail : node->m_next->m_prev) = node->m_prev;
    delete node;
}

// Finds the first range of more than one value.
inline bool GEN_INDEX_COMPRESSOR_QUEUE::find_range(std::string const &name, RangeText &found) const
{
    char const *const begin = name.c_str();
    char const *cursor = begin;
    char ch = *cursor++;
    while (ch != '\0') {
        char const *const index_begin = cursor - 1;
        if (ch != '[' || !scan_index(ch, cursor, found.m_range)) {
            ch = *cursor++;
        } else if (found.m_range[0] != found.m_range[1]) {
            found.m_begin = static_cast<std::string::size_type>(index_begin - begin);
            found.m_end = static_cast<std::string::size_type>(cursor - 1 - begin);
            return true;
        }
    }
    return false;
}

// Replaces the front by one entry for each value of the range.
inline void GEN_INDEX_COMPRESSOR_QUEUE::split_front(RangeText const &at)
{
    Node *const whole = m_head;
    std::string const ahead = whole->m_name.substr(0, at.m_begin + 1);
    std::string const rest = whole->m_name.substr(at.m_end - 1);
    for (int value = at.m_range[1]; value >= at.m_range[0]; --value) {
        Node *const node = new Node{m_head, nullptr, ahead, false, false};
        node->m_name.append(std::to_string(value)).append(rest);
        m_head->m_prev = node;
        m_head = node;
    }
    unlink(whole);
}

#endif
