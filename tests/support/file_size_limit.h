// A limit on the size of the files that this process writes, like a disk that becomes full in the middle of a file.
#ifndef TESTS_SUPPORT_FILE_SIZE_LIMIT_H
#define TESTS_SUPPORT_FILE_SIZE_LIMIT_H

#include <cstddef>
#include <memory>

/// While the object lives, a write beyond the limit fails with EFBIG, and the signal for that is ignored. A file of up
/// to `size_bytes` can be written.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(std::size_t size_bytes);
    ~FileSizeLimit();
    FileSizeLimit(FileSizeLimit const &) = delete;
    FileSizeLimit &operator=(FileSizeLimit const &) = delete;

    /// False on a platform without such a limit.
    bool is_set() const;

private:
    struct Former;
    std::unique_ptr<Former> m_former; // null: not set
};

#endif
