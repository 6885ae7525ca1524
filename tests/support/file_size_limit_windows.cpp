#include "tests/support/file_size_limit.h"

struct FileSizeLimit::Former
{
};

FileSizeLimit::FileSizeLimit(std::size_t) {}

FileSizeLimit::~FileSizeLimit() = default;

bool FileSizeLimit::is_set() const
{
    return m_former != nullptr;
}
