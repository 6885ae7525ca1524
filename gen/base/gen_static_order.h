// The order in which the first static objects of the library are built. Each is defined in its own room, as
//
//     [[gnu::init_priority(GEN_STATIC_ORDER_PATH_STATE)]] GEN_STATIC_STATE<GEN_PATH_STATE> l_state;
//
// They are built in the order of their numbers, whatever the link order is, and before the ordinary static objects.
// They are released in exactly the reverse order. The command line is built between two parts of the path state, as
// required.
#ifndef GEN_STATIC_ORDER_H
#define GEN_STATIC_ORDER_H

#include <atomic>

/// 101 is the first number that the compiler leaves to programs.
constexpr int GEN_STATIC_ORDER_MEM_INITIALIZER = 101;
constexpr int GEN_STATIC_ORDER_PROJECT_TEXTS = 102;
constexpr int GEN_STATIC_ORDER_COMMAND_LINE = 103;
constexpr int GEN_STATIC_ORDER_PATH_STATE = 104;
constexpr int GEN_STATIC_ORDER_MACHINE_STATE = 105;

/// The holder of a static state. get() may be called at any time, even by static objects and callbacks that run before
/// the state is built or after its release. There is one holder for each type of state.
template <typename State>
class GEN_STATIC_STATE
{
public:
    template <typename... Arguments>
    explicit GEN_STATIC_STATE(Arguments &...arguments) : m_state(arguments...)
    {
        s_state.store(&m_state, std::memory_order_relaxed);
    }
    ~GEN_STATIC_STATE() { s_state.store(nullptr, std::memory_order_relaxed); }
    GEN_STATIC_STATE(GEN_STATIC_STATE const &) = delete;
    GEN_STATIC_STATE &operator=(GEN_STATIC_STATE const &) = delete;

    /// The state; null before it is built and from the start of its release. Any thread may call it.
    static State *get() { return s_state.load(std::memory_order_relaxed); }

private:
    static inline std::atomic<State *> s_state{nullptr};
    State m_state;
};

#endif
