// A walk over the values of an enumeration that notices when it has come to the end. Pure functions on values: any
// thread may use its own.
#ifndef GEN_ITERATOR_SYS_H
#define GEN_ITERATOR_SYS_H

#include "err_sys.h"

#include <cstddef>
#include <iterator>
#include <type_traits>

/// A place in a range of consecutive values of an enumeration. The end is part of its state, so that no step leads
/// beyond it and no value is read there.
///
/// An iterator made without arguments stands at an end. Iterators are equal if they stand at the same value; so an end
/// equals every end of the same value.
///
/// It passes through its range as often as wanted, but its values come as copies: an input iterator by the names of
/// C++17.
template <typename ENUM>
class GEN_ENUM_ITERATOR
{
    static_assert(std::is_enum_v<ENUM>, "GEN_ENUM_ITERATOR walks over an enumeration");

public:
    using iterator_category = std::input_iterator_tag;
    using value_type = ENUM;
    using difference_type = std::ptrdiff_t;
    using pointer = ENUM const *;
    using reference = ENUM;

    constexpr GEN_ENUM_ITERATOR() = default;

    /// @param value  where it stands; a value above `end` counts as `end`
    /// @param end    the value behind the last one
    constexpr GEN_ENUM_ITERATOR(ENUM value, ENUM end) : m_value(value < end ? value : end), m_end(end) {}

    /// The value; at the end an internal error, "Cannot dereference an end enum iterator".
    constexpr ENUM operator*() const
    {
        if (is_end())
            err_report_internal_error("Cannot dereference an end enum iterator", "GEN", "h/gen_iterator_sys.h",
                                      __LINE__);
        return m_value;
    }

    /// Goes to the next value; at the end it stays there.
    constexpr GEN_ENUM_ITERATOR &operator++()
    {
        if (!is_end())
            m_value = static_cast<ENUM>(static_cast<std::underlying_type_t<ENUM>>(m_value) + 1);
        return *this;
    }

    /// The same, and gives the iterator as it was.
    constexpr GEN_ENUM_ITERATOR operator++(int)
    {
        GEN_ENUM_ITERATOR const former = *this;
        ++*this;
        return former;
    }

    constexpr bool operator==(GEN_ENUM_ITERATOR const &other) const { return m_value == other.m_value; }
    constexpr bool operator!=(GEN_ENUM_ITERATOR const &other) const { return !(*this == other); }

private:
    constexpr bool is_end() const { return m_value == m_end; }

    ENUM m_value{};
    ENUM m_end{};
};

/// Consecutive values of an enumeration, for a loop:
///
///     for (GEN_LIBRARY_TYPE const type : GEN_ENUM_RANGE(GEN_LIB_ROOT, GEN_LIB_SIZE))
///         use(type);
template <typename ENUM>
class GEN_ENUM_RANGE
{
public:
    /// @param first  the first value
    /// @param end    the value behind the last one; not above `first`: the range is empty
    constexpr GEN_ENUM_RANGE(ENUM first, ENUM end) : m_first(first), m_end(end) {}

    constexpr GEN_ENUM_ITERATOR<ENUM> begin() const { return {m_first, m_end}; }
    constexpr GEN_ENUM_ITERATOR<ENUM> end() const { return {m_end, m_end}; }

private:
    ENUM m_first;
    ENUM m_end;
};

#endif
