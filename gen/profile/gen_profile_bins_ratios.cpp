// Which bins match a ratio rule.
//
// A path may be as long as the tree is deep, so a bin doesn't compare its whole path with the patterns: it goes on from
// the places in the patterns that its parent has reached. "*" matches any number of names, also none, so a place before
// a "*" is kept, and reaching it reaches the place after it too. With the pattern "Fitter/*/Moves", whose places are 0
// before Fitter, 1 before "*", 2 before Moves and 3 at the end:
//
//     at the start           0
//     Fitter                 1 2      after Fitter comes the "*", which may match no name
//     Fitter/Placer          1 2      Placer is taken by the "*"
//     Fitter/Placer/Moves    1 2 3    the end: the bin matches
//
// The places in all patterns are the state of a bin. Most bins have the state of their parent, and equal states are
// stored once. A state that lacks rules that were added later is computed anew, from the top of the tree, when the next
// child is created.
#include "gen/profile/gen_profile_bins_ratios.h"

#include "gen/base/gen_debug_message.h"

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>

namespace {

struct BuiltinRule
{
    char const *m_pattern;
    double m_ratio;
};

// Ratios that were measured on the suite's own flows.
constexpr BuiltinRule BUILTIN_RULES[] = {
    {"Fitter/*/Cluster Annealing/Perform Temperature", 2.85},
    {"Fitter/*/Cluster Annealing/Serial Perform Temperature", 2.85},
    {"*/TIS Annotate Delay Tree", 3.14},
    {"Fitter/*/TDC Timing Analysis", 1.12},
    {"Fitter/*/Placer/*/Placement Congestion Analysis", 2.49},
    {"Fitter/*/Delay Cache/*/perform_lookahead_explorations", 2.77},
    {"Fitter/*/CBE-level placement optimization/*/Perform Moves", 1.59},
    {"Fitter/*/BLE-level placement optimization/*/Perform Moves", 2.94},
    {"Fitter/*/Router Main Loop Before First Convergence/Core Routing", 1.39},
    {"Fitter/*/Router Main Loop After First Convergence/Core Routing", 1.07},
    {"Fitter/*/target_density_calibration", 1000000.0},
    {"*/U2B2_DIRECTOR->work", 2.0},
};

// Of a bin that matches several rules: its whole CPU time is subtracted from its estimate.
constexpr double CONFLICTING_FACTOR = -1.0;

bool is_star(std::string const &segment)
{
    return segment == "*";
}

// The number of places in all patterns.
std::size_t place_count()
{
    std::vector<GEN_PB_RATIO_RULE> const &rules = gen_pb().ratios.rules;
    return rules.empty() ? 0 : rules.back().m_first_place + rules.back().m_segments.size() + 1;
}

GEN_PB_RATIO_STATE empty_state()
{
    return {gen_pb().ratios.rules.size(), std::vector<bool>(place_count()), {}};
}

// Adds the place before a segment, or at the end, and those after it that the names so far reach too.
void reach(GEN_PB_RATIO_STATE &state, GEN_PB_RATIO_RULE const &rule, std::size_t segment)
{
    state.m_places[rule.m_first_place + segment] = true;
    while (segment < rule.m_segments.size() && is_star(rule.m_segments[segment]))
        state.m_places[rule.m_first_place + ++segment] = true;
}

GEN_PB_RATIO_STATE state_before_first_name()
{
    GEN_PB_RATIO_STATE state = empty_state();
    for (GEN_PB_RATIO_RULE const &rule : gen_pb().ratios.rules)
        reach(state, rule, /*segment=*/0);
    return state;
}

GEN_PB_RATIO_STATE state_after(GEN_PB_RATIO_STATE const &former, std::string const &name)
{
    GEN_PB_RATIO_STATE state = empty_state();
    for (GEN_PB_RATIO_RULE const &rule : gen_pb().ratios.rules)
        for (std::size_t i = 0; i < rule.m_segments.size(); ++i) {
            if (!former.m_places[rule.m_first_place + i])
                continue;
            if (is_star(rule.m_segments[i]))
                reach(state, rule, i);
            else if (rule.m_segments[i] == name)
                reach(state, rule, i + 1);
        }
    return state;
}

void find_matches(GEN_PB_RATIO_STATE &state)
{
    std::vector<GEN_PB_RATIO_RULE> const &rules = gen_pb().ratios.rules;
    for (std::size_t i = 0; i < rules.size(); ++i)
        if (state.m_places[rules[i].m_first_place + rules[i].m_segments.size()])
            state.m_matches.push_back(i);
}

// The stored state that is equal.
GEN_PB_RATIO_STATE const *stored(GEN_PB_RATIO_STATE state)
{
    std::set<GEN_PB_RATIO_STATE> &states = gen_pb().ratios.states;
    auto const known = states.find(state);
    if (known != states.end())
        return &*known;
    find_matches(state);
    return &*states.insert(std::move(state)).first;
}

bool knows_all_rules(GEN_PB_IMPL const &bin)
{
    return bin.m_ratio_state != nullptr && bin.m_ratio_state->m_rule_count == gen_pb().ratios.rules.size();
}

// Sets the state of a bin whose parent, if it has one, knows all rules.
void set_state(GEN_PB_IMPL &bin)
{
    if (bin.m_parent == nullptr) {
        bin.m_ratio_state = stored(state_after(state_before_first_name(), bin.m_name));
        return;
    }
    GEN_PB_RATIO_STATE const &former = *bin.m_parent->m_ratio_state;
    GEN_PB_RATIO_STATE state = state_after(former, bin.m_name);
    bin.m_ratio_state = state.m_places == former.m_places ? &former : stored(std::move(state));
}

void set_state_with_all_rules(GEN_PB_IMPL &bin)
{
    std::vector<GEN_PB_IMPL *> outdated; // from the bin upward
    for (GEN_PB_IMPL *each = &bin; each != nullptr && !knows_all_rules(*each); each = each->m_parent)
        outdated.push_back(each);
    for (; !outdated.empty(); outdated.pop_back())
        set_state(*outdated.back());
}

void warn_of_conflict(GEN_PB_IMPL const &bin)
{
    std::vector<GEN_PB_RATIO_RULE> const &rules = gen_pb().ratios.rules;
    std::vector<std::size_t> const &matches = bin.m_ratio_state->m_matches;
    gen_debug_message("WARNING: multiple CPU:WC ratios found for bin %s. Disabling CPU:WC.\n",
                      gen_pb_path_text(gen_pb_path(bin, /*top=*/nullptr), "/"));
    gen_debug_message("  WARNING: first ratio: %.1f (%s)", rules[matches[0]].m_ratio, rules[matches[0]].m_pattern);
    for (std::size_t i = 1; i < matches.size(); ++i)
        gen_debug_message("  WARNING: additional ratio: %.1f (%s)", rules[matches[i]].m_ratio,
                          rules[matches[i]].m_pattern);
}

} // namespace

void gen_pb_add_ratio_rule(char const *pattern, double ratio)
{
    GEN_PB_RATIO_RULE rule{pattern, {}, ratio, place_count()};
    boost::split(rule.m_segments, rule.m_pattern, [](char c) { return c == '/'; });
    gen_pb().ratios.rules.push_back(std::move(rule));
}

void gen_pb_add_builtin_ratio_rules()
{
    for (BuiltinRule const &rule : BUILTIN_RULES)
        gen_pb_add_ratio_rule(rule.m_pattern, rule.m_ratio);
}

void gen_pb_apply_ratio_rules(GEN_PB_IMPL &bin)
{
    set_state_with_all_rules(bin);
    std::vector<std::size_t> const &matches = bin.m_ratio_state->m_matches;
    if (matches.size() > 1) {
        warn_of_conflict(bin);
        bin.m_wc_est_factor = CONFLICTING_FACTOR;
    } else if (matches.size() == 1)
        bin.m_wc_est_factor = 1 / gen_pb().ratios.rules[matches[0]].m_ratio - 1;
}

void gen_pb_forget_ratio_states()
{
    gen_pb().ratios.states.clear();
}
