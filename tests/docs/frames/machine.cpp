#include "expect.h"
#include "gen_machine_sys.h"

namespace {

void kernel_plain() {}
void kernel_avx2() {}

int l_workers = -1;

void start_workers(int count, void (*kernel)())
{
    l_workers = kernel != nullptr ? count : -1;
}

} // namespace

int main()
{
    // example
    expect(l_workers == -1 || l_workers > 0, "the cores are counted, or the capture failed");
}
