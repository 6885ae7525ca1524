#include "gen_fstream_sys.h"

#include "gen/os/gen_os.h"
#include "gen/time/gen_time_calendar.h"
#include "gen_time_sys.h"

namespace {

template <typename Stream>
void open_stream(Stream &stream, char const *path, int mode, int protection, std::ios_base::openmode direction)
{
    if (stream.is_open())
        return;
    auto const bits = static_cast<std::ios_base::openmode>(mode) | direction;
    if (gen_os_open_stream(*stream.rdbuf(), path, bits, protection))
        stream.clear();
    else
        stream.setstate(std::ios_base::failbit);
}

} // namespace

std::brisel_ofstream::brisel_ofstream() = default;

std::brisel_ofstream::brisel_ofstream(char const *path, int mode, int protection)
{
    open(path, mode, protection);
}

std::brisel_ofstream::~brisel_ofstream() = default;

void std::brisel_ofstream::open(char const *path, int mode, int protection)
{
    open_stream(*this, path, mode, protection, std::ios_base::out);
}

std::brisel_ifstream::brisel_ifstream() = default;

std::brisel_ifstream::brisel_ifstream(char const *path, int mode, int protection)
{
    open(path, mode, protection);
}

std::brisel_ifstream::~brisel_ifstream() = default;

void std::brisel_ifstream::open(char const *path, int mode, int protection)
{
    open_stream(*this, path, mode, protection, std::ios_base::in);
}

void gen_print_local_time(std::brisel_ofstream *stream)
{
    *stream << gen_asctime_text(gen_get_current_time_seconds());
}
