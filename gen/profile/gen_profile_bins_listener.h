// Listeners: an object that follows the bins of a run registers here, and the files below it don't know its name. All
// calls are made on the thread that owns the bins, or that owned them until the end of the run.
//
//     class Log final : public GEN_PB_LISTENER
//     {
//         void on_open(GEN_PB_IMPL const &bin, GEN_PB_EVENT const &event) override;
//         void on_end(char const *name) override;
//     } l_log;
//     gen_pb_listen_to_bins(l_log); // on_open of each bin from now on
//     gen_pb_listen_to_end(l_log);  // on_end of each run that is finalized, and on_complete before it
//
// As long as no listener is registered for bins, an open and a close cost one test more.
#ifndef GEN_PROFILE_BINS_LISTENER_H
#define GEN_PROFILE_BINS_LISTENER_H

class GEN_PB_IMPL;
struct GEN_PB_EVENT;

/// Its functions open and close no bin, and they must not throw: the tree would be left in the middle of an event. Only
/// on_end() may register or remove a listener.
class GEN_PB_LISTENER
{
public:
    /// A bin was opened; it becomes the current bin afterwards. A bin that is opened inside itself is not reported.
    virtual void on_open(GEN_PB_IMPL const & /*bin*/, GEN_PB_EVENT const & /*event*/) {}
    /// A bin was closed; it is still the current bin, and its figures include the interval.
    virtual void on_close(GEN_PB_IMPL const & /*bin*/, GEN_PB_EVENT const & /*event*/) {}
    /// The bin that was opened or closed has a step label; called after on_open() or on_close().
    virtual void on_step(GEN_PB_IMPL const & /*bin*/, GEN_PB_EVENT const & /*event*/) {}
    /// The bins are closed, and finalize(name) is about to write the reports and to delete the bins. The tagged report
    /// has not moved any bin yet. Events that are still buffered are not in the tree.
    virtual void on_complete(GEN_PB_IMPL const & /*root*/, char const * /*name*/) {}
    /// A run has ended by finalize(name): its bins are deleted, and the thread doesn't own the bins any more.
    virtual void on_end(char const * /*name*/) {}

protected:
    ~GEN_PB_LISTENER() = default;
};

/// Calls a listener at each open, close and step from now on. A second call changes nothing.
void gen_pb_listen_to_bins(GEN_PB_LISTENER &listener);
/// Ends the calls at opens, closes and steps.
void gen_pb_ignore_bins(GEN_PB_LISTENER &listener);
/// Calls a listener at the end of each run from now on: on_complete() and on_end(). A second call changes nothing.
void gen_pb_listen_to_end(GEN_PB_LISTENER &listener);

/// Call the listeners at the end of a run, the one that registered last first.
void gen_pb_notify_complete(GEN_PB_IMPL const &root, char const *name);
void gen_pb_notify_end(char const *name);

#endif
