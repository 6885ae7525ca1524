#include "gen_string_sys.h"

#include <istream>

bool gen_getline(std::istream *in, std::string *line, char delimiter)
{
    if (!in->good()) {
        line->clear();
        return false;
    }
    std::getline(*in, *line, delimiter);
    return true;
}
