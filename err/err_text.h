// Texts in static memory, for the report of an internal error, which may allocate nothing and take no lock.
#ifndef ERR_TEXT_H
#define ERR_TEXT_H

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <thread>

/// Appends text to memory of a fixed size.
class ERR_TEXT
{
public:
    using Take = void (*)(char const *text, std::size_t size);

    /// A text that does not fit is cut.
    ERR_TEXT(char *memory, std::size_t capacity) : ERR_TEXT(memory, capacity, capacity, nullptr) {}

    /// The contents are handed to `take` when they have the first size, after that whenever the memory is full.
    ERR_TEXT(char *memory, std::size_t first_size, std::size_t capacity, Take take)
        : m_memory(memory), m_limit(first_size), m_capacity(capacity), m_take(take)
    {
    }

    ERR_TEXT &operator<<(std::string_view text)
    {
        for (;;) {
            std::size_t const count = text.copy(m_memory + m_size, m_limit - m_size);
            m_size += count;
            text.remove_prefix(count);
            if (text.empty() || m_take == nullptr)
                return *this;
            flush();
        }
    }

    ERR_TEXT &append_number(std::int64_t number) { return append_digits(number, 10); }
    ERR_TEXT &append_hexadecimal(std::uint64_t number) { return (*this << "0x").append_digits(number, 16); }

    /// Hands the contents over, if there are any.
    void flush()
    {
        if (m_size != 0)
            m_take(m_memory, m_size);
        m_size = 0;
        m_limit = m_capacity;
    }

    std::size_t size() const { return m_size; }

private:
    template <typename Number>
    ERR_TEXT &append_digits(Number number, int base)
    {
        char digits[24];
        std::to_chars_result const result = std::to_chars(std::begin(digits), std::end(digits), number, base);
        return *this << std::string_view(digits, static_cast<std::size_t>(result.ptr - digits));
    }

    char *m_memory;
    std::size_t m_size = 0;
    std::size_t m_limit;
    std::size_t m_capacity;
    Take m_take;
};

/// A text that any thread may replace while another reads it. A reader never waits for a writer and sees a text as it
/// was set, never parts of two.
///
/// A writer claims a slot that is not shown, fills it, and shows it. A reader copies the shown slot and starts again if
/// another one was shown in the meantime, since the copied one may have been claimed after that. A slot whose writer
/// has vanished, in the child of a fork, is lost.
class ERR_SHARED_TEXT
{
public:
    /// A longer text is cut.
    static constexpr std::size_t CAPACITY = 4096;

    void set(std::string_view text)
    {
        std::uint64_t const claimed = claim();
        Slot &slot = m_slots[claimed];
        std::size_t const size = std::min(text.size(), CAPACITY);
        for (std::size_t i = 0; i < size; ++i)
            slot.text[i].store(text[i], std::memory_order_release);
        slot.size.store(size, std::memory_order_release);
        std::uint64_t shown = m_shown.load(std::memory_order_relaxed);
        while (!m_shown.compare_exchange_weak(shown, (shown / SLOTS + 1) * SLOTS + claimed, std::memory_order_acq_rel,
                                              std::memory_order_relaxed))
            ;
        m_slots[shown % SLOTS].is_claimed.store(false, std::memory_order_release);
    }

    /// The text, in the memory given.
    std::string_view read(char (&memory)[CAPACITY]) const
    {
        for (;;) {
            std::uint64_t const shown = m_shown.load(std::memory_order_acquire);
            Slot const &slot = m_slots[shown % SLOTS];
            std::size_t const size = slot.size.load(std::memory_order_acquire);
            for (std::size_t i = 0; i < size; ++i)
                memory[i] = slot.text[i].load(std::memory_order_acquire);
            if (m_shown.load(std::memory_order_relaxed) == shown)
                return {memory, size};
        }
    }

private:
    static constexpr std::uint64_t SLOTS = 8;

    struct Slot
    {
        std::atomic<bool> is_claimed;
        std::atomic<std::size_t> size;
        std::atomic<char> text[CAPACITY];
    };

    std::uint64_t claim()
    {
        for (std::uint64_t i = 1;; i = (i + 1) % SLOTS) {
            if (!m_slots[i].is_claimed.exchange(true, std::memory_order_acq_rel))
                return i;
            if (i == 0)
                std::this_thread::yield();
        }
    }

    Slot m_slots[SLOTS] = {{{true}, {0}, {}}};
    // The number of texts that were set, times SLOTS, plus the slot that is shown: first slot 0, with the empty text.
    std::atomic<std::uint64_t> m_shown{0};
};

#endif
