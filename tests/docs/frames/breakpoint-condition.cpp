#include "expect.h"
#include "gen_bp_parser_sys.h"

#include <string>

namespace {

std::string shown;
std::string executed;

void show(std::string const &errors)
{
    shown = errors;
}

void run(std::string const &condition)
{
    executed = condition;
}

} // namespace

int main()
{
    // example
    expect(shown.empty(), "there is no error");
    expect(executed == "LOGICAL_AND(EQUAL_TO(HPATH(|top|state),BUS(1010)),TIME_GT(5ns))",
           "the calls are as the page says");
}
