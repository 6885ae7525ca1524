// An iterator over consecutive values of an enumeration that knows its end. An object belongs to one thread at a time;
// there is no shared state.
#ifndef GEN_ITERATOR_SYS_H
#define GEN_ITERATOR_SYS_H

#include "err_sys.h"

#include <cstddef>
#include <iterator>
#include <type_traits>

/// An iterator over consecutive values of an enumeration. It stores the end of its range, so that it can't move past
/// the end and can't be dereferenced there.
///
/// A default-constructed iterator is at its end. Iterators are equal if their values are equal, whatever their ends
/// are.
///
/// A range may be passed several times. Since dereferencing returns a copy, the category of C++17 is that of an input
/// iterator.
template <typename Enum>
class GEN_ENUM_ITERATOR
{
    static_assert(std::is_enum_v<Enum>, "GEN_ENUM_ITERATOR walks over an enumeration");

public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Enum;
    using difference_type = std::ptrdiff_t;
    using pointer = Enum const *;
    using reference = Enum;

    constexpr GEN_ENUM_ITERATOR() = default;

    /// @param value  the first value; a value above `end` counts as `end`
    /// @param end    the value after the last one
    constexpr GEN_ENUM_ITERATOR(Enum value, Enum end) : m_value(value < end ? value : end), m_end(end) {}

    /// The current value. At the end it is the internal error "Cannot dereference an end enum iterator".
    constexpr Enum operator*() const
    {
        if (is_end())
            err_report_internal_error("Cannot dereference an end enum iterator", "GEN", "h/gen_iterator_sys.h",
                                      __LINE__);
        return m_value;
    }

    /// Moves to the next value; does nothing at the end.
    constexpr GEN_ENUM_ITERATOR &operator++()
    {
        if (!is_end())
            m_value = static_cast<Enum>(static_cast<std::underlying_type_t<Enum>>(m_value) + 1);
        return *this;
    }

    /// Moves to the next value and returns the iterator before the move.
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

    Enum m_value{};
    Enum m_end{};
};

/// A range of consecutive values of an enumeration, for a loop:
///
///     for (GEN_LIBRARY_TYPE const type : GEN_ENUM_RANGE(GEN_LIB_ROOT, GEN_LIB_SIZE))
///         use(type);
template <typename Enum>
class GEN_ENUM_RANGE
{
public:
    /// @param first  the first value
    /// @param end    the value after the last one; if it is not above `first`, the range is empty
    constexpr GEN_ENUM_RANGE(Enum first, Enum end) : m_first(first), m_end(end) {}

    constexpr GEN_ENUM_ITERATOR<Enum> begin() const { return {m_first, m_end}; }
    constexpr GEN_ENUM_ITERATOR<Enum> end() const { return {m_end, m_end}; }

private:
    Enum m_first;
    Enum m_end;
};

#endif
