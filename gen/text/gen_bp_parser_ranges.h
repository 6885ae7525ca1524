// The tokens of a condition, and what a parse asks about any range of them, each answered in constant time however long
// the range is. A parse looks at one range after another, each inside the one before, so answers found by walking would
// cost the square of the length for a row of operators or a nest of parentheses.
//
// One walk from the back notes for each place what follows it at its own depth of parentheses. Behind "(" stands a
// group of its own, and the place of "(" itself takes over what is noted behind the end of that group:
//
//     place         0  1  2  3  4  5  6  7
//     token         (  a  =  1  )  || b  )     8 is "none"
//     next =        8  2  2  8  8  8  8  8
//     next ||       5  8  8  8  8  5  8  8
//     closer        7  4  4  4  4  7  7  7     the parenthesis that ends the group of the place
//
// A range has what is noted at its first place, if that lies before its end.
#ifndef GEN_BP_PARSER_RANGES_H
#define GEN_BP_PARSER_RANGES_H

#include "gen_bp_parser_sys.h"

#include "gen/base/gen_assert.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <list>
#include <vector>

/// Places of tokens from `first` up to, but not including, `last`.
struct BP_RANGE
{
    std::size_t first;
    std::size_t last;

    bool is_empty() const { return first == last; }
};

class BP_TOKEN_RANGES
{
public:
    BP_TOKEN_RANGES(std::list<BP_TOKEN *>::const_iterator first, std::list<BP_TOKEN *>::const_iterator last)
    {
        m_places.reserve(static_cast<std::size_t>(std::distance(first, last)) + 1);
        PLACE place{};
        for (; first != last; ++first) {
            GEN_ASSERT(*first != nullptr, "token != 0");
            place.token = *first;
            m_places.push_back(place);
            place.depth += depth_step(place.token->m_type);
        }
        place.token = nullptr;
        m_places.push_back(place);
        note_what_follows();
    }

    BP_RANGE whole() const { return {0, m_places.size() - 1}; }
    BP_TOKEN const &token(std::size_t place) const { return *m_places[place].token; }

    /// Tells whether a binary operator stands in the range at its outer depth. A range without one must not close a
    /// parenthesis that it doesn't open.
    bool has_operator(BP_RANGE range) const
    {
        for (std::size_t const place : m_places[range.first].next)
            if (place < range.last)
                return true;
        check_depth(range);
        return false;
    }

    /// The operator at the outer depth of the range that binds weakest, and the first of its kind; the first place of
    /// the range if there is none.
    ///
    /// @param balanced  receives whether the range closes what it opens; an operator of the weakest kind ends the
    ///                  search where it stands, whatever follows
    std::size_t find_split(BP_RANGE range, bool *balanced) const
    {
        PLACE const &start = m_places[range.first];
        *balanced = true;
        if (start.next[0] < range.last)
            return start.next[0];
        check_depth(range);
        *balanced = m_places[range.last].depth == start.depth;
        for (std::size_t const place : start.next)
            if (place < range.last)
                return place;
        return range.first;
    }

private:
    // From the weakest to the strongest.
    static constexpr BP_TOKEN_TYPE OPERATORS[] = {BP_TOKEN_OR, BP_TOKEN_AND, BP_TOKEN_EQUAL, BP_TOKEN_GREATER,
                                                  BP_TOKEN_LESS};
    static constexpr std::size_t OPERATOR_COUNT = std::size(OPERATORS);

    // "None" is the number of tokens.
    struct PLACE
    {
        BP_TOKEN const *token;
        std::ptrdiff_t depth;             // of parentheses in front of the token
        std::size_t closer;               // the parenthesis that ends the group of this place, or none
        std::size_t next[OPERATOR_COUNT]; // the operator of each kind, from here on in the same group, or none
    };

    static std::ptrdiff_t depth_step(BP_TOKEN_TYPE type)
    {
        return type == BP_TOKEN_LEFT_PAREN ? 1 : type == BP_TOKEN_RIGHT_PAREN ? -1 : 0;
    }

    void check_depth(BP_RANGE range) const
    {
        GEN_ASSERT(m_places[range.first].closer >= range.last, "paren_count >= 0");
    }

    void note_what_follows()
    {
        std::size_t const none = m_places.size() - 1;
        m_places[none].closer = none;
        std::fill_n(m_places[none].next, OPERATOR_COUNT, none);
        for (std::size_t place = none; place-- > 0;) {
            BP_TOKEN_TYPE const type = token(place).m_type;
            if (type == BP_TOKEN_RIGHT_PAREN)
                note_same_as(none, place);
            else if (type == BP_TOKEN_LEFT_PAREN)
                note_same_as(std::min(m_places[place + 1].closer + 1, none), place);
            else
                note_same_as(place + 1, place);
            if (type == BP_TOKEN_RIGHT_PAREN)
                m_places[place].closer = place;
            for (std::size_t kind = 0; kind < OPERATOR_COUNT; ++kind)
                if (type == OPERATORS[kind])
                    m_places[place].next[kind] = place;
        }
    }

    void note_same_as(std::size_t source, std::size_t place)
    {
        m_places[place].closer = m_places[source].closer;
        std::copy_n(m_places[source].next, OPERATOR_COUNT, m_places[place].next);
    }

    std::vector<PLACE> m_places; // one behind the last token too
};

#endif
