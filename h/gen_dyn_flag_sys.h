// Dynamic flags: up to 32 marks of one bit each in every object of a client. Flags are created and destroyed at run
// time, by name.
//
// A client owns a manager, keeps a GEN_DYN_FLAG in each of its objects, and derives a clearer that visits all of them.
// Destroying a flag visits no object: its bit stays set in the objects and is noted as dirty. The objects are visited
// when a dirty bit has to be used again, and that visit clears all bits that are dirty at that time.
//
// Nothing here takes a lock: a manager and its objects belong to one thread at a time. A misuse is an internal error
// and changes nothing.
#ifndef GEN_DYN_FLAG_SYS_H
#define GEN_DYN_FLAG_SYS_H

#include "zel_export_sys.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

class GEN_DYN_FLAG_MANAGER;

/// A set of up to 32 marks, one bit each. It holds no reference to a manager. Its functions can be used in constant
/// expressions; the library exports them too, for callers that look them up by name.
class GEN_DYN_FLAG
{
public:
    /// The empty set.
    GEN_INLINE_API constexpr GEN_DYN_FLAG() : m_bits(0) {}

    /// @param bits  the marks, one bit each
    GEN_INLINE_API constexpr GEN_DYN_FLAG(unsigned int bits) : m_bits(bits) {}

    /// Adds the marks of `flag`, and returns a copy of the result.
    GEN_INLINE_API constexpr GEN_DYN_FLAG set_flag(GEN_DYN_FLAG const &flag)
    {
        m_bits |= flag.m_bits;
        return *this;
    }

    /// Removes the marks of `flag`, and returns a copy of the result.
    GEN_INLINE_API constexpr GEN_DYN_FLAG clear_flag(GEN_DYN_FLAG const &flag)
    {
        m_bits &= ~flag.m_bits;
        return *this;
    }

    /// The marks that are in both sets.
    GEN_INLINE_API constexpr GEN_DYN_FLAG restricted_to(GEN_DYN_FLAG const &flag) const
    {
        return {m_bits & flag.m_bits};
    }

    /// Whether any mark of `flag` is set; false for an empty one.
    GEN_INLINE_API constexpr bool test(GEN_DYN_FLAG const &flag) const { return (m_bits & flag.m_bits) != 0; }

    /// Same as test().
    GEN_INLINE_API constexpr bool test_if_any(GEN_DYN_FLAG const &flag) const { return test(flag); }

    /// Whether all marks of `flag` are set; true for an empty one.
    GEN_INLINE_API constexpr bool test_if_all(GEN_DYN_FLAG const &flag) const
    {
        return (m_bits & flag.m_bits) == flag.m_bits;
    }

    /// Whether no mark is set.
    GEN_INLINE_API constexpr bool test_if_zero() const { return m_bits == 0; }

    /// A self-test for developers: creates and destroys the flags "f1" to "f5", which must not exist yet, and writes
    /// the results of the manager's functions to "gen_dyn_flag_test.txt" in the current directory. docs/file-formats.md
    /// describes the file. If it can't be written, no error is reported.
    ///
    /// @param mgr  the manager, with at least five unused slots; null is the internal error "mgr!=0"
    GEN_API static void test_myself_out(GEN_DYN_FLAG_MANAGER *mgr);

private:
    friend class GEN_DYN_FLAG_MANAGER;

    unsigned int m_bits;
};

/// The marks, of all 32, that are not in `flag`.
GEN_INLINE_API constexpr GEN_DYN_FLAG operator~(GEN_DYN_FLAG const &flag)
{
    return GEN_DYN_FLAG(0xffffffff).clear_flag(flag);
}

/// The marks that are in either set.
GEN_INLINE_API constexpr GEN_DYN_FLAG operator|(GEN_DYN_FLAG const &first, GEN_DYN_FLAG const &second)
{
    return GEN_DYN_FLAG(first).set_flag(second);
}

/// Adds the marks of `flag` to `target`. Returns a copy of the result, not a reference.
GEN_INLINE_API constexpr GEN_DYN_FLAG operator|=(GEN_DYN_FLAG &target, GEN_DYN_FLAG const &flag)
{
    return target.set_flag(flag);
}

/// The interface through which a manager clears marks in a client's objects. The client derives from it.
class GEN_API GEN_DYN_FLAG_CLEARER
{
public:
    GEN_DYN_FLAG_CLEARER();
    GEN_DYN_FLAG_CLEARER(GEN_DYN_FLAG_CLEARER const &other);
    GEN_DYN_FLAG_CLEARER &operator=(GEN_DYN_FLAG_CLEARER const &other);
    virtual ~GEN_DYN_FLAG_CLEARER();

    /// Removes the marks of `flag` from every object of the client.
    ///
    /// The constructor of a manager calls it, and create_flag() may call it. During create_flag() it may call functions
    /// of the manager; the new flag then exists already. After its return all bits of `flag` count as clean, also those
    /// of flags that it destroyed itself.
    virtual void clear_flags(GEN_DYN_FLAG const &flag) = 0;
};

/// Assigns the 32 bits of a client's flag words to flags. Each bit has a slot:
///
/// | slot  | flag                                                  | text in get_flag_name() |
/// |-------|-------------------------------------------------------|-------------------------|
/// | named | exists                                                | its name                |
/// | dirty | was destroyed; the bit may still be set in objects    | DIRTY                   |
/// | clean | doesn't exist; the bit is not set in any object       | BAD_FLAG                |
class GEN_DYN_FLAG_MANAGER
{
public:
    /// Calls the clearer with all 32 bits, so that bits left in an object don't count as flags.
    ///
    /// @param clearer  the client's clearer, which can already be called. It is not owned and must outlive the manager.
    ///                 Null is the internal error "m_clearer != 0"
    GEN_API explicit GEN_DYN_FLAG_MANAGER(GEN_DYN_FLAG_CLEARER *clearer);

    /// Does not call the clearer.
    GEN_API ~GEN_DYN_FLAG_MANAGER();

    GEN_DYN_FLAG_MANAGER(GEN_DYN_FLAG_MANAGER const &) = delete;
    GEN_DYN_FLAG_MANAGER &operator=(GEN_DYN_FLAG_MANAGER const &) = delete;

    /// Creates a flag and returns it. It is the lowest clean bit or, if no bit is clean, the most significant dirty
    /// bit. In the second case the clearer is called once with all dirty bits, and all of them are clean afterwards.
    ///
    /// @param name  name of the flag, copied. Null is the internal error "name != 0"
    ///
    /// If another flag has the name, it is the internal error "flag 'NAME' (0xBIT) already exists". The search for the
    /// name ends at the first clean bit: a flag of that name on a bit above it is not noticed, and get_named_flag()
    /// then finds the new flag. The 33rd flag is the internal error "too many flags, can't create 'NAME'".
    ///
    /// An exception of the clearer is passed on. The flag exists then, and the bits still count as dirty.
    GEN_API GEN_DYN_FLAG create_flag(char const *name);

    /// Destroys a flag. No object is visited.
    ///
    /// @param flag  a single bit that is a flag; the empty set does nothing. Anything else is an internal error:
    ///              "flag 0xBITS: not a single bit" or "flag 0xBITS not found to delete"
    GEN_API void destroy_flag(GEN_DYN_FLAG const &flag);

    /// A text for any set of bits: the bits in hexadecimal, then for each bit the text of its slot in the table above.
    ///
    ///     0 -> "(0x0) "    bits 0 and 2, where the flag of bit 2 was destroyed -> "(0x5) f1 | DIRTY"
    GEN_API std::string get_flag_name(GEN_DYN_FLAG const &flag) const;

    /// The flag with a name. If there is none, it is the internal error "couldn't find flag 'NAME'".
    GEN_API GEN_DYN_FLAG get_named_flag(char const *name) const;

    /// Counts the slots. A null pointer is the internal error "used != 0 && dirty != 0 && clean != 0".
    ///
    /// @param used   receives the number of flags
    /// @param dirty  receives the number of flags on dirty bits: 0, except while create_flag() calls the clearer and
    ///               after the clearer has thrown an exception
    /// @param clean  receives the number of slots without a flag, whether dirty or clean
    GEN_API void get_usage_stats(int *used, int *dirty, int *clean) const;

private:
    static constexpr std::size_t SLOT_COUNT = 32; // bits of a flag word

    std::uint64_t m_slot_count;
    std::unique_ptr<char[]> m_names[SLOT_COUNT]; // null: no flag
    std::uint8_t m_is_dirty[SLOT_COUNT];         // 1: the bit of a destroyed flag, maybe set in objects
    GEN_DYN_FLAG_CLEARER *m_clearer;
};

#endif
