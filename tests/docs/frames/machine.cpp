#include "expect.h"
#include "gen_machine_sys.h"

namespace {

void kernel_plain() {}
void kernel_avx2() {}

int workers = -1;

void start_workers(int count, void (*kernel)())
{
    workers = kernel != nullptr ? count : -1;
}

} // namespace

int main()
{
    // example
    expect(workers == -1 || workers > 0, "the cores are counted, or the capture failed");
}
