// Messages of zel_mem, recorded instead of shown.
#ifndef TESTS_SUPPORT_MESSAGE_RECORDER_H
#define TESTS_SUPPORT_MESSAGE_RECORDER_H

#include "mem_sys.h"

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

/// One message.
struct RecordedMessage
{
    MEM_MSG_KIND kind;
    std::string module;
    std::string text;

    bool operator==(RecordedMessage const &other) const
    {
        return kind == other.kind && module == other.module && text == other.text;
    }
};

inline std::ostream &operator<<(std::ostream &out, RecordedMessage const &message)
{
    return out << (message.kind == MEM_MSG_INFO ? "Info" : "Debug") << " (" << message.module << "): " << message.text;
}

/// Records all messages, debug messages included, while it lives; any thread may emit and ask. Messages then go where
/// they go without a redirection.
class MessageRecorder
{
public:
    MessageRecorder() { mem_msg_redirect(&record, this); }
    ~MessageRecorder() { mem_msg_redirect(nullptr, nullptr); }
    MessageRecorder(MessageRecorder const &) = delete;
    MessageRecorder &operator=(MessageRecorder const &) = delete;

    std::vector<RecordedMessage> messages() const
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        return m_messages;
    }

    /// The bare texts, in order.
    std::vector<std::string> lines() const
    {
        std::vector<std::string> texts;
        for (RecordedMessage &message : messages())
            texts.push_back(std::move(message.text));
        return texts;
    }

    /// How often exactly this text came.
    std::size_t count(std::string const &text) const
    {
        std::vector<std::string> const texts = lines();
        return static_cast<std::size_t>(std::count(texts.begin(), texts.end(), text));
    }

    bool has(std::string const &text) const { return count(text) != 0; }

    void clear()
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_messages.clear();
    }

    /// The messages so far, which are then forgotten.
    std::vector<RecordedMessage> take()
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        return std::exchange(m_messages, {});
    }

private:
    static void record(MEM_MSG_KIND kind, char const *module, char const *text, void *context)
    {
        auto *const recorder = static_cast<MessageRecorder *>(context);
        std::lock_guard<std::mutex> const lock(recorder->m_mutex);
        recorder->m_messages.push_back({kind, module, text});
    }

    mutable std::mutex m_mutex;
    std::vector<RecordedMessage> m_messages;
};

#endif
