// The tokens of a condition, and the facts that a parse needs about ranges of them: which operator splits a range, and
// whether its parentheses match. A parse looks at one range after another, each within the one before. If each fact
// needed a walk over its range, a row of operators or a nest of parentheses would cost the square of its length. So one
// walk from the last token to the first takes notes at each place, from which has_operator() and find_split() give
// their results in constant time.
//
// The notes of a place describe the tokens from that place to the end of its group: the ")" that closes the parentheses
// around it. A "(" opens an inner group, which is stepped over: its place gets the notes of the place after the end of
// the inner group. Below are the notes for the tokens of "(a = 1) || b)". The "(" that the last ")" closes lies before
// them:
//
//     place         0  1  2  3  4  5  6  7
//     token         (  a  =  1  )  || b  )     8 means "none"
//     next =        8  2  2  8  8  8  8  8
//     next ||       5  8  8  8  8  5  8  8
//     closer        7  4  4  4  4  7  7  7     the parenthesis that ends the group of the place
//
// At place 0 the "=" is not noted, since it lies in the inner group, but the "||" at 5 is. A range contains an operator
// at its outer depth if the place in the notes of its first token lies before the end of the range. So the range of the
// places 0 to 4 contains none.
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
        TokenNotes notes{};
        for (; first != last; ++first) {
            GEN_ASSERT(*first != nullptr, "token != 0");
            notes.token = *first;
            m_places.push_back(notes);
            notes.depth += depth_step(notes.token->m_type);
        }
        notes.token = nullptr;
        m_places.push_back(notes);
        note_what_follows();
    }

    BP_RANGE whole() const { return {0, m_places.size() - 1}; }
    BP_TOKEN const &token(std::size_t place) const { return *m_places[place].token; }

    /// Whether the range contains a binary operator at its outer depth. A range without one must not close a
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
    /// @param balanced  receives whether the range closes all parentheses that it opens; always true if the operator is
    ///                  of the weakest kind, since it is returned without a check of the parentheses
    std::size_t find_split(BP_RANGE range, bool *balanced) const
    {
        TokenNotes const &start = m_places[range.first];
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
    // From the one that binds weakest to the one that binds strongest.
    static constexpr BP_TOKEN_TYPE OPERATORS[] = {BP_TOKEN_OR, BP_TOKEN_AND, BP_TOKEN_EQUAL, BP_TOKEN_GREATER,
                                                  BP_TOKEN_LESS};
    static constexpr std::size_t OPERATOR_COUNT = std::size(OPERATORS);

    // The number of tokens means "none".
    struct TokenNotes
    {
        BP_TOKEN const *token;
        std::ptrdiff_t depth;             // of parentheses before the token
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

    std::vector<TokenNotes> m_places; // also one after the last token
};

#endif
