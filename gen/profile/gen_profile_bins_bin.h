// One bin: its figures, its children and its path.
#ifndef GEN_PROFILE_BINS_BIN_H
#define GEN_PROFILE_BINS_BIN_H

#include "gen/profile/gen_profile_bins_state.h"

#include <string_view>
#include <unordered_map>

/// A bin, but for its public operations, which gen_profile_bins adds in the one class derived from this. A bin owns its
/// children.
class GEN_PB_IMPL : public GEN_PROFILE_BIN
{
public:
    GEN_PB_IMPL() = default;
    ~GEN_PB_IMPL() override;
    GEN_PB_IMPL(GEN_PB_IMPL const &) = delete;
    GEN_PB_IMPL &operator=(GEN_PB_IMPL const &) = delete;

    static GEN_PB_IMPL *get_root_bin() { return gen_pb().tree.root; }
    static GEN_PB_IMPL *get_current_bin() { return gen_pb().tree.current.load(std::memory_order_relaxed); }

    /// The child of that name, which is not empty; null if there is none.
    GEN_PB_IMPL *find_child(std::string_view name) const;
    /// Appends a child, and sets its parent. If there is no memory nothing has changed, except that the child is
    /// deleted.
    GEN_PB_IMPL *add_child(std::unique_ptr<GEN_PB_IMPL> child);
    /// Takes over the child of another bin, which lists it until it drops its moved children. If there is no memory
    /// nothing has changed; there always is for the first child after reserve_child().
    void adopt_child(GEN_PB_IMPL &child);
    void reserve_child() { m_children.reserve(1); }
    /// Forgets the children whose parent is another bin by now, which owns them.
    void drop_moved_children();

    // Members that an open and a close use lie together.
    std::string m_name;
    GEN_PB_IMPL *m_parent = nullptr;
    std::uint32_t m_count = 0;
    std::uint32_t m_open_count = 0;
    std::uint32_t m_flags = 0;
    mutable bool m_computed = false; ///< the cache below is valid
    GEN_CLOCKS m_start;              ///< of the last open
    GEN_PB_METRICS m_last;           ///< interval of the last close
    GEN_PB_METRICS m_total;          ///< all intervals

    std::vector<GEN_PB_IMPL *> m_children; ///< owned, in order of first opening
    mutable std::size_t m_walk = 0;        ///< the number of children that a walk over the subtree has entered
    GEN_PB_METRICS m_overhead;
    std::string m_code_prefix;
    std::string m_tag;
    std::string m_user_tag;
    GEN_PB_IMPL *m_labelled_above = nullptr; ///< the nearest bin above that has a step label; set at the creation
    std::uint32_t m_step_number = 0;         ///< among the steps of m_labelled_above, from 1 on; 0 without a label
    std::uint32_t m_child_steps = 0;
    GEN_PB_RATIO_STATE const *m_ratio_state = nullptr; ///< null or too old until it is needed
    double m_wc_est_factor = 0.0;                      ///< 0.0: no ratio rule applies

    // A cache of the values that follow from m_total, m_overhead and the children.
    mutable GEN_PB_METRICS m_report;
    mutable GEN_PB_METRICS m_report_overhead;
    mutable GEN_PB_METRICS m_self;

private:
    void list_child(GEN_PB_IMPL &child);
    void index_child(GEN_PB_IMPL &child);

    /// Children by name, once there are too many to look through; the keys point into the children.
    std::unique_ptr<std::unordered_map<std::string_view, GEN_PB_IMPL *>> m_child_index;
};

/// A new bin without name, parent and children.
inline std::unique_ptr<GEN_PB_IMPL> gen_pb_make_bin()
{
    return gen_pb().tree.make_bin();
}

/// The step identifier of a bin with a step label, such as "3.1".
std::string gen_pb_step(GEN_PB_IMPL const &bin);

/// The path of a bin: the bins from `top` down to it.
///
/// @param top  the bin or one above it; null for the one that has no parent
///
/// If `top` is another bin, this is an internal error, and the path is empty.
std::vector<GEN_PB_IMPL const *> gen_pb_path(GEN_PB_IMPL const &bin, GEN_PROFILE_BIN const *top);

/// The names of a path, also empty ones.
std::vector<std::string> gen_pb_path_names(std::vector<GEN_PB_IMPL const *> const &path);

/// The names of a path, joined. An empty name adds nothing, not even the separator.
///
///     Fitter, Placer, Moves with "::" -> "Fitter::Placer::Moves"
///     Fitter, "", Moves with "::"     -> "Fitter::Moves"
std::string gen_pb_path_text(std::vector<GEN_PB_IMPL const *> const &path, char const *separator);

/// The names from the top of the tree down to the current bin. Empty if there is none, and on a thread that doesn't own
/// the bins.
std::vector<std::string> gen_pb_current_path();

#endif
