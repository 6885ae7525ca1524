#include "expect.h"
#include "gen_bp_parser_sys.h"

#include <string>

namespace {

std::string l_shown;
std::string l_executed;

void show(std::string const &errors)
{
    l_shown = errors;
}

void run(std::string const &condition)
{
    l_executed = condition;
}

} // namespace

int main()
{
    // example
    expect(l_shown.empty(), "there is no error");
    expect(l_executed == "LOGICAL_AND(EQUAL_TO(HPATH(|top|state),BUS(1010)),TIME_GT(5ns))",
           "the calls are as the page says");
}
