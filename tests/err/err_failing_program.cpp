// A program that reports an internal error.
#include "err_sys.h"

int main()
{
    err_report_internal_error("a check", "TST", "tests/err", 1);
}
