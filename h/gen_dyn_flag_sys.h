// Dynamic flags: up to 32 one-bit marks in a word of each object, whose meanings are given out at run time, by name.
//
// A client owns a manager, keeps a GEN_DYN_FLAG in each of its objects, and derives a clearer that visits them all.
// To destroy a flag is cheap: its bit stays in the objects and is only noted as dirty. The objects are visited when a
// dirty bit has to be used again, once for all that are dirty by then.
//
// Nothing here takes a lock: a manager and its objects belong to one thread at a time. A misuse is an internal error,
// and leaves everything as it was.
#ifndef GEN_DYN_FLAG_SYS_H
#define GEN_DYN_FLAG_SYS_H

#include "zel_export_sys.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

class GEN_DYN_FLAG_MANAGER;

/// A set of marks, held in 32 bits. It is a plain number, with no tie to a manager; each operation is one on a word.
class GEN_DYN_FLAG
{
public:
    /// No mark.
    constexpr GEN_DYN_FLAG() = default;

    /// @param bits  the marks, bit by bit
    constexpr GEN_DYN_FLAG(unsigned int bits) : m_bits(bits) {}

    /// Adds the marks of `flag`, and returns a copy of the result.
    constexpr GEN_DYN_FLAG set_flag(GEN_DYN_FLAG const &flag)
    {
        m_bits |= flag.m_bits;
        return *this;
    }

    /// Takes the marks of `flag` away, and returns a copy of the result.
    constexpr GEN_DYN_FLAG clear_flag(GEN_DYN_FLAG const &flag)
    {
        m_bits &= ~flag.m_bits;
        return *this;
    }

    /// The marks that are in `flag` as well.
    constexpr GEN_DYN_FLAG restricted_to(GEN_DYN_FLAG const &flag) const { return {m_bits & flag.m_bits}; }

    /// Whether any mark of `flag` is set; false for an empty one.
    constexpr bool test(GEN_DYN_FLAG const &flag) const { return (m_bits & flag.m_bits) != 0; }

    /// Same as test().
    constexpr bool test_if_any(GEN_DYN_FLAG const &flag) const { return test(flag); }

    /// Whether all marks of `flag` are set; true for an empty one.
    constexpr bool test_if_all(GEN_DYN_FLAG const &flag) const { return (m_bits & flag.m_bits) == flag.m_bits; }

    /// Whether no mark is set.
    constexpr bool test_if_zero() const { return m_bits == 0; }

    /// A developer's self-test: drives a manager through the life of the flags "f1" to "f5", which must not exist yet,
    /// and writes what the manager tells to "gen_dyn_flag_test.txt" in the current directory; docs/file-formats.md has
    /// the file. The flags are destroyed again. A file that can't be written is silently left out.
    ///
    /// @param mgr  the manager, with five slots that aren't used; null is an internal error
    GEN_API static void test_myself_out(GEN_DYN_FLAG_MANAGER *mgr);

private:
    friend class GEN_DYN_FLAG_MANAGER;

    unsigned int m_bits = 0;
};

/// All 32 marks that are not in `flag`.
constexpr GEN_DYN_FLAG operator~(GEN_DYN_FLAG const &flag)
{
    return GEN_DYN_FLAG(0xffffffff).clear_flag(flag);
}

/// The marks of both.
constexpr GEN_DYN_FLAG operator|(GEN_DYN_FLAG const &first, GEN_DYN_FLAG const &second)
{
    return GEN_DYN_FLAG(first).set_flag(second);
}

/// Adds the marks of `flag` to `target`, and returns a copy of the result, no reference.
constexpr GEN_DYN_FLAG operator|=(GEN_DYN_FLAG &target, GEN_DYN_FLAG const &flag)
{
    return target.set_flag(flag);
}

/// The hand by which a manager reaches a client's objects; derived by the client.
class GEN_API GEN_DYN_FLAG_CLEARER
{
public:
    GEN_DYN_FLAG_CLEARER();
    GEN_DYN_FLAG_CLEARER(GEN_DYN_FLAG_CLEARER const &other);
    GEN_DYN_FLAG_CLEARER &operator=(GEN_DYN_FLAG_CLEARER const &other);
    virtual ~GEN_DYN_FLAG_CLEARER();

    /// Takes the marks of `flag` away from every object that the client holds.
    ///
    /// The constructor of a manager calls it, and so may any create_flag(). From the second it may call the manager
    /// back: the flag that is being created is there by then, under its name. Once it has returned, all bits of `flag`
    /// count as clean, also those of flags that it destroyed in the meantime.
    virtual void clear_flags(GEN_DYN_FLAG const &flag) = 0;
};

/// Gives out the 32 bits of a client's flag words.
///
///     slot of a bit  its flag                                             shown by get_flag_name() as
///     named          is there                                             its name
///     dirty          was destroyed; the bit may be set in objects still   DIRTY
///     clean          isn't there, and neither is the bit in any object    BAD_FLAG
class GEN_DYN_FLAG_MANAGER
{
public:
    /// Calls the clearer with all 32 bits, so that no bit left in an object is taken for a flag.
    ///
    /// @param clearer  the client's, ready to be called; not owned, and has to outlive the manager. Null is an internal
    ///                 error
    GEN_API explicit GEN_DYN_FLAG_MANAGER(GEN_DYN_FLAG_CLEARER *clearer);

    /// Doesn't call the clearer.
    GEN_API ~GEN_DYN_FLAG_MANAGER();

    GEN_DYN_FLAG_MANAGER(GEN_DYN_FLAG_MANAGER const &) = delete;
    GEN_DYN_FLAG_MANAGER &operator=(GEN_DYN_FLAG_MANAGER const &) = delete;

    /// Creates a flag and returns it, a single bit: the lowest clean one or, if none is clean, the highest dirty one.
    /// In the second case the clearer is called, once, with all dirty bits, and all of them are clean afterwards.
    ///
    /// @param name  the flag's name; copied. Null is an internal error
    ///
    /// A name that another flag has is an internal error, but for a flag above a clean bit that is taken: its name goes
    /// unnoticed, and get_named_flag() finds the new flag from then on. The 33rd flag is an internal error.
    ///
    /// An exception of the clearer passes through. The flag exists then, and the bits count as dirty still.
    GEN_API GEN_DYN_FLAG create_flag(char const *name);

    /// Gives up a flag; no object is visited.
    ///
    /// @param flag  a flag, a single bit. Anything else is an internal error, but for no bit at all, which is nothing
    GEN_API void destroy_flag(GEN_DYN_FLAG const &flag);

    /// Any set of bits as a text: in hexadecimal, and then slot by slot as in the table of the class.
    ///
    ///     0 -> "(0x0) "    bits 0 and 2, the second destroyed -> "(0x5) f1 | DIRTY"
    GEN_API std::string get_flag_name(GEN_DYN_FLAG const &flag) const;

    /// The flag of a name; none of that name is an internal error.
    GEN_API GEN_DYN_FLAG get_named_flag(char const *name) const;

    /// Counts the slots. A null pointer is an internal error.
    ///
    /// @param used   receives the count of flags
    /// @param dirty  receives the count of flags on dirty bits: 0, unless create_flag() is calling the clearer or ended
    ///               by its exception
    /// @param clean  receives the count of slots without a flag, whether dirty or clean
    GEN_API void get_usage_stats(int *used, int *dirty, int *clean) const;

private:
    static constexpr std::size_t SLOT_COUNT = 32; // bits of a flag word

    std::uint64_t m_slot_count;
    std::unique_ptr<char[]> m_names[SLOT_COUNT]; // null: no flag
    std::uint8_t m_is_dirty[SLOT_COUNT];         // 1: the bit of a destroyed flag, maybe set in objects
    GEN_DYN_FLAG_CLEARER *m_clearer;
};

#endif
