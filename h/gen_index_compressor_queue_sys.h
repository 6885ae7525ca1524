// A queue that folds runs of indexed names while they stream through it: a[0], a[1], a[2] become a[0:2], and the four
// names of a two-by-two array a[0:1][0:1]. Names enter at the back and are compared with their neighbour only; nothing
// is sorted. Finished entries leave at the front while later names are still coming, and can be turned into single
// names again. A queue belongs to one thread.
#ifndef GEN_INDEX_COMPRESSOR_QUEUE_SYS_H
#define GEN_INDEX_COMPRESSOR_QUEUE_SYS_H

#include "err_sys.h"
#include "zel_export_sys.h"

#include <cstdint>
#include <cstring>
#include <string>

/// Folds adjacent names whose indices follow one another.
///
/// The usual loop takes what is final while names come, and the rest at the end:
///
///     GEN_INDEX_COMPRESSOR_QUEUE queue;
///     for (std::string const &name : names) {
///         for (queue.push_back(name); queue.ready(); queue.pop_front())
///             write(queue.front());
///     }
///     for (; !queue.empty(); queue.pop_front())
///         write(queue.front());
///
/// An index is one number, or two with a colon between them, in square brackets, and under some types of queue also a
/// bare number. Numbers may be negative and go from -2147483639 to 2147483639. The order within a range does not
/// matter: [3:0] is the range from 0 to 3. Two names fold into one entry if they agree in all but one index, and there
/// the second takes up where the first ends. A second dimension folds as soon as its rows are alike:
///
/// | type     | pushed                             | entries                                                     |
/// |----------|------------------------------------|-------------------------------------------------------------|
/// | required | a[0], a[1], a[2]                   | a[0:2]                                                      |
/// | required | a[0][0], a[0][1], a[1][0], a[1][1] | a[0:1][0:1]                                                 |
/// | required | a[0:3], a[4:7]                     | a[0:7]                                                      |
/// | required | a[1], a[0]                         | a[1], a[0]: a gap, a repeat or a step downward folds nothing |
/// | required | a[0][0], a[1][1]                   | a[0][0], a[1][1]: one index may differ, not two             |
/// | required | a1, a2                             | a1, a2                                                      |
/// | optional | a1, a2                             | a[1:2]                                                      |
/// | required | a[0]b, a[1]                        | a[0:1]: the b is lost                                       |
/// | required | a[0], a[1]b                        | a[0:1]b                                                     |
///
/// The last two rows tell that a comparison ends with the shorter name. A caller whose names may be cut off right
/// behind an index keeps them apart. An entry that has folded is written anew from the later name, with brackets and
/// without leading zeros at the folded index.
///
/// A name ends, for every comparison, at its first null character.
///
/// The members are written below and compiled into whoever uses them; the library exports a copy of each all the same.
class GEN_INDEX_COMPRESSOR_QUEUE
{
public:
    /// What counts as an index.
    enum BRACKET_TYPE
    {
        BRACKET_REQUIRED = 0,            ///< only what stands in brackets
        BRACKET_OPTIONAL = 1,            ///< any bare run of digits too
        BRACKET_OPTIONAL_AFTER_TILDE = 2 ///< bare runs too behind a "~", up to the next "|" or ":"
    };

    /// Makes an empty queue.
    ///
    /// @param error_check  whether the queue must be empty when it is destroyed
    /// @param type         what counts as an index
    GEN_API explicit GEN_INDEX_COMPRESSOR_QUEUE(bool error_check = true, BRACKET_TYPE type = BRACKET_REQUIRED);

    /// Copies share the entries: once one of them has changed, the others may only be assigned to. Under error check
    /// each must be empty, or assigned from an empty one, when it is destroyed.
    GEN_API GEN_INDEX_COMPRESSOR_QUEUE(GEN_INDEX_COMPRESSOR_QUEUE const &other);
    GEN_API GEN_INDEX_COMPRESSOR_QUEUE &operator=(GEN_INDEX_COMPRESSOR_QUEUE const &other);

    /// Frees no entries: clear() comes first. With error check a queue that is not empty is an internal error.
    GEN_API ~GEN_INDEX_COMPRESSOR_QUEUE();

    /// Adds a name at the back, folding where possible. The time is linear in the length of the names compared.
    ///
    /// @param name  any text; brackets that hold no index are compared as text, and an index folds with another only
    ///
    /// The entry in front of a name that does not fold becomes final, unless it has folded itself and the two differ in
    /// nothing but their indices: then it stays open for the next dimension.
    GEN_API void push_back(std::string const &name);

    /// Whether an entry is final, so that the front may be taken.
    ///
    /// An entry that expand_front() has taken apart while it was final counts for good: the queue is ready from there
    /// on, also when it is empty. A consumer that expands asks empty().
    GEN_API bool ready() const;

    GEN_API bool empty() const;

    /// The entry at the front, valid until the queue changes. An internal error on an empty queue.
    GEN_API std::string const &front() const;

    /// Takes the entry at the front apart until it holds no range, and returns what is then the front; valid until the
    /// queue changes. An internal error on an empty queue.
    ///
    ///     a[0:2]      -> a[0], a[1], a[2]             returns a[0]
    ///     a[0:1][0:1] -> a[0][0], a[0][1], a[1][0:1]  returns a[0][0]
    ///     a[5]        -> a[5]                         returns a[5]
    ///
    /// A range gives an entry for each of its values at once, in rising order. Only ranges in brackets count, whatever
    /// the type of the queue.
    GEN_API std::string const &expand_front();

    /// Removes the entry at the front, if there is one.
    GEN_API void pop_front();

    /// Removes all entries.
    GEN_API void clear();

private:
    struct NODE
    {
        NODE *m_next; // towards the back
        NODE *m_prev; // towards the front
        std::string m_name;
        bool m_merged; // has absorbed a pushed name
        bool m_ready;  // final; counted in m_ready_count
    };

    // A range in brackets within a name.
    struct RANGE_TEXT
    {
        std::string::size_type m_begin; // of the opening bracket
        std::string::size_type m_end;   // behind the closing bracket
        int m_range[2];
    };

    // An index as it stands in a text.
    struct INDEX
    {
        int m_low;
        int m_high;
        char const *m_low_end;    // behind the first number
        char const *m_high_begin; // the last number, which may be the first
        char const *m_end;        // behind the index
        bool m_plain;             // spelled as it would be written
    };

    // Where the merged text differs from the incoming one.
    struct SEAM
    {
        bool m_ok;                      // nothing found that forbids the merge
        bool m_merged;                  // an index was found at which to merge
        std::string::size_type m_equal; // both texts begin with the same characters, so many
        char const *m_begin;            // of the index in the incoming text
        INDEX m_incoming;
        INDEX m_existing;
    };

    GEN_API bool merge(std::string &existing, std::string const &incoming, bool &compatible);
    // In these two `ch` is the current character of a text and `cursor` points one past it. Both move on success; past
    // a number that is out of range scan_int() moves too. The larger number comes last in `range`.
    GEN_API bool scan_index(char &ch, char const *&cursor, int *const range) const;
    GEN_API bool scan_int(char &ch, char const *&cursor, int &value) const;

    inline bool read_index(char const *at, INDEX &index) const;
    inline static bool read_number(char const *&at, int &value, bool &plain);
    // Above 9 for any other character.
    static unsigned digit_of(char ch) { return static_cast<unsigned>(ch - '0'); }
    static bool is_digit(char ch) { return digit_of(ch) <= 9; }
    bool starts_index(char ch) const { return ch == '[' || (m_bare_index_allowed && is_digit(ch)); }
    inline void update_bare_index_allowed(char ch);
    inline std::string::size_type walk_start(std::string const &existing, std::string const &incoming) const;
    inline static std::string::size_type first_difference(std::string const &existing, std::string const &incoming);
    inline bool step_index(char const *&at1, char const *&at2, SEAM &seam) const;
    inline static void note_difference(SEAM &seam, char const *begin, INDEX const &incoming, INDEX const &existing);
    inline static void write_merged(std::string &existing, std::string const &incoming, SEAM const &seam);

    inline void fold_back();
    inline void append(std::string const &name);
    inline void unlink(NODE *node);
    inline bool find_range(std::string const &name, RANGE_TEXT &found) const;
    inline void split_front(RANGE_TEXT const &at);

    bool m_error_check;
    NODE *m_head;
    NODE *m_tail;
    std::int32_t m_ready_count;
    bool m_bracket_optional;
    bool m_bracket_after_tilde;
    bool m_bare_index_allowed; // at the present place of a comparison
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

// What is imported stands in front of its first use: Windows' compiler then takes the definition in its place.

inline bool GEN_INDEX_COMPRESSOR_QUEUE::ready() const
{
    return m_ready_count != 0;
}

inline bool GEN_INDEX_COMPRESSOR_QUEUE::empty() const
{
    return m_head == nullptr;
}

// Looks for the one index at which `incoming` takes up directly behind `existing`, and replaces `existing` by the
// merged text. `compatible` tells that no plain character differs. A difference that forbids the merge doesn't end the
// walk: `compatible` is still to be found out.
inline bool GEN_INDEX_COMPRESSOR_QUEUE::merge(std::string &existing, std::string const &incoming, bool &compatible)
{
    compatible = true;
    m_bare_index_allowed = m_bracket_optional;
    if (incoming.empty())
        return false;

    std::string::size_type const start = walk_start(existing, incoming);
    SEAM seam = {true, false, start, nullptr, {}, {}};
    char const *at1 = incoming.c_str() + start;
    char const *at2 = existing.c_str() + start;
    while (*at1 != '\0' && *at2 != '\0') {
        update_bare_index_allowed(*at2);
        if (starts_index(*at1)) {
            if (!step_index(at1, at2, seam))
                return false;
        } else {
            compatible = *at1++ == *at2++;
            if (!compatible)
                return false;
        }
    }
    if (!seam.m_ok || !seam.m_merged)
        return false;
    write_merged(existing, incoming, seam);
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
        fold_back();
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
    RANGE_TEXT found;
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

// A place that the walk is sure to reach with nothing found so far, so that it may start there. Where only brackets
// count that is the last bracket in front of the first difference, or the difference itself: over equal texts the walk
// steps in any way, but never beyond an opening bracket.
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

// Length of what both texts begin with, up to a null character.
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
        // Not 0 if a byte of the word is 0, or if one behind such a byte is 1.
        std::uint64_t const zeros = (word1 - 0x0101010101010101) & ~word1 & 0x8080808080808080;
        if (((word1 ^ word2) | zeros) != 0)
            break;
    }
    while (at < size && incoming[at] == existing[at] && incoming[at] != '\0')
        ++at;
    return at;
}

// Only a tilde can change what holds for the type as a whole.
inline void GEN_INDEX_COMPRESSOR_QUEUE::update_bare_index_allowed(char ch)
{
    if (!m_bracket_after_tilde)
        return;
    if (ch == '~')
        m_bare_index_allowed = true;
    else if (ch == '|' || ch == ':')
        m_bare_index_allowed = m_bracket_optional;
}

// Steps both texts over an index, or over a pair of brackets that hold none. False if there is no way on: an index
// against something else, or a bare number that is out of range or lacks its second half.
inline bool GEN_INDEX_COMPRESSOR_QUEUE::step_index(char const *&at1, char const *&at2, SEAM &seam) const
{
    INDEX index1;
    INDEX index2;
    if (read_index(at1, index1) && read_index(at2, index2)) {
        if (index1.m_low != index2.m_low || index1.m_high != index2.m_high)
            note_difference(seam, at1, index1, index2);
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

// The indices at a place differ; the incoming one stands at `begin`.
inline void GEN_INDEX_COMPRESSOR_QUEUE::note_difference(SEAM &seam, char const *begin, INDEX const &incoming,
                                                        INDEX const &existing)
{
    if (seam.m_merged || existing.m_high + 1 != incoming.m_low) {
        seam.m_ok = false;
        seam.m_merged = false;
        return;
    }
    seam.m_merged = true;
    seam.m_begin = begin;
    seam.m_incoming = incoming;
    seam.m_existing = existing;
}

// The incoming text with the joined range in place of its index.
inline void GEN_INDEX_COMPRESSOR_QUEUE::write_merged(std::string &existing, std::string const &incoming,
                                                     SEAM const &seam)
{
    char const *const begin = incoming.c_str();
    char const *const end = begin + incoming.size();
    // In a long run all is there but the high number.
    if (seam.m_begin == begin + seam.m_equal && seam.m_existing.m_plain && seam.m_incoming.m_plain) {
        char const *const high = seam.m_incoming.m_high_begin;
        std::string::size_type const low_size =
            static_cast<std::string::size_type>(seam.m_existing.m_low_end - existing.c_str());
        std::string::size_type const high_size = static_cast<std::string::size_type>(end - high);
        existing.resize(low_size + 1 + high_size);
        existing[low_size] = ':';
        std::memcpy(&existing[low_size + 1], high, high_size);
        return;
    }
    std::string const range =
        '[' + std::to_string(seam.m_existing.m_low) + ':' + std::to_string(seam.m_incoming.m_high) + ']';
    existing.assign(begin, seam.m_begin);
    existing.append(range);
    existing.append(seam.m_incoming.m_end, end);
}

inline bool GEN_INDEX_COMPRESSOR_QUEUE::scan_index(char &ch, char const *&cursor, int *const range) const
{
    INDEX index = {};
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

// Reads one number, or two with a colon between them: in brackets, or bare where that is allowed.
inline bool GEN_INDEX_COMPRESSOR_QUEUE::read_index(char const *at, INDEX &index) const
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

// Reads one number; false without a digit, or after a run of digits that is too large. The run is passed over either
// way. `plain` becomes false if the number would be written otherwise.
inline bool GEN_INDEX_COMPRESSOR_QUEUE::read_number(char const *&at, int &value, bool &plain)
{
    bool const negative = *at == '-' && is_digit(at[1]);
    if (negative)
        ++at;
    char const *const digits = at;
    bool fits = true;
    int sum = 0;
    for (unsigned digit = digit_of(*at); digit <= 9; digit = digit_of(*++at)) {
        if (sum >= 214748364) // no further digit is sure to fit
            fits = false;
        else
            sum = sum * 10 + static_cast<int>(digit);
    }
    value = negative ? -sum : sum;
    if (*digits == '0' && (negative || at - digits != 1))
        plain = false;
    return fits && at != digits;
}

// Merges the back into what stands in front of it, as long as that works: further dimensions.
inline void GEN_INDEX_COMPRESSOR_QUEUE::fold_back()
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
    NODE *const node = new NODE{nullptr, m_tail, name, false, false};
    (m_tail == nullptr ? m_head : m_tail->m_next) = node;
    m_tail = node;
}

// Takes an entry out of the list and frees it.
inline void GEN_INDEX_COMPRESSOR_QUEUE::unlink(NODE *node)
{
    (node->m_prev == nullptr ? m_head : node->m_prev->m_next) = node->m_next;
    (node->m_next == nullptr ? m_tail : node->m_next->m_prev) = node->m_prev;
    delete node;
}

// Finds the first range of more than one value.
inline bool GEN_INDEX_COMPRESSOR_QUEUE::find_range(std::string const &name, RANGE_TEXT &found) const
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

// Replaces the front by an entry for each value of its range.
inline void GEN_INDEX_COMPRESSOR_QUEUE::split_front(RANGE_TEXT const &at)
{
    NODE *const whole = m_head;
    std::string const ahead = whole->m_name.substr(0, at.m_begin + 1);
    std::string const behind = whole->m_name.substr(at.m_end - 1);
    for (int value = at.m_range[1]; value >= at.m_range[0]; --value) {
        NODE *const node = new NODE{m_head, nullptr, ahead, false, false};
        node->m_name.append(std::to_string(value)).append(behind);
        m_head->m_prev = node;
        m_head = node;
    }
    unlink(whole);
}

#endif
