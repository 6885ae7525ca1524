#include "options.h"

#include "error.h"

#include <charconv>

namespace fitter {
namespace {

constexpr std::uint64_t LARGEST_CHANNEL_WIDTH = 100000;

template <class Number>
Number number_option(std::string const &option, std::string const &value, std::uint64_t smallest, std::uint64_t largest)
{
    std::uint64_t number = 0;
    char const *const end = value.data() + value.size();
    auto const [stop, error] = std::from_chars(value.data(), end, number);
    if (error != std::errc() || stop != end || number < smallest || number > largest)
        throw Error(option + " \"" + value + "\", expected a number from " + std::to_string(smallest) + " to " +
                    std::to_string(largest));
    return static_cast<Number>(number);
}

unsigned effort_option(std::string const &value)
{
    struct Effort
    {
        char const *name;
        unsigned scale;
    };
    for (Effort const &effort : {Effort{"fast", 2}, Effort{"normal", 5}, Effort{"high", 20}})
        if (value == effort.name)
            return effort.scale;
    throw Error("--effort \"" + value + "\", expected fast, normal or high");
}

std::string directory_option(std::string const &option, std::string const &value)
{
    if (value.empty())
        throw Error(option + " needs a directory");
    return value;
}

void take_value(Options &options, std::string const &option, std::string const &value)
{
    if (option == "--seed")
        options.seed = number_option<std::uint32_t>(option, value, 0, UINT32_MAX);
    else if (option == "--channel-width")
        options.channel_width = number_option<Index>(option, value, 1, LARGEST_CHANNEL_WIDTH);
    else if (option == "--effort")
        options.effort = effort_option(value);
    else if (option == "--out")
        options.output_directory = directory_option(option, value);
    else if (option == "--library")
        options.libraries += (options.libraries.empty() ? "" : ";") + directory_option(option, value);
    else
        options.project_directory = directory_option(option, value);
}

bool takes_value(std::string const &word)
{
    return word == "--seed" || word == "--channel-width" || word == "--effort" || word == "--out" ||
           word == "--library" || word == "--project";
}

void take_design(Options &options, std::string const &word)
{
    if (word.empty())
        throw Error("the netlist's name is empty");
    if (!options.design.empty())
        throw Error("more than one netlist: \"" + options.design + "\" and \"" + word + "\"");
    options.design = word;
}

} // namespace

char const *const USAGE = "usage: fitter [option]... design.blif\n"
                          "\n"
                          "Packs, places and routes a netlist of four-input LUTs and flip-flops.\n"
                          "\n"
                          "  --seed N            start of the random numbers of the placement (1)\n"
                          "  --channel-width N   tracks of a routing channel (24)\n"
                          "  --effort E          of the placement: fast, normal or high (normal)\n"
                          "  --out DIR           where the results go; made if missing (the project)\n"
                          "  --project DIR       the project's directory (the current one)\n"
                          "  --library DIR       a library directory, relative to the project; may be repeated\n"
                          "  --version           print the version\n"
                          "  --help              print this help\n"
                          "\n"
                          "The design is looked for in the project, its libraries and the installation.\n"
                          "Results are <design>.fit.txt and undo_redo.txt.\n"
                          "The status is 0 if the design fits, 1 if it doesn't or if something fails.\n"
                          "With gen_print_profile_bins = on in kalvern.ini, profile_bins_Fitter.log in the\n"
                          "current directory shows where the time went.\n";

Options parse_options(std::vector<std::string> const &words)
{
    Options options;
    bool only_names = false; // true after "--"
    for (std::size_t i = 0; i < words.size(); ++i) {
        std::string const &word = words[i];
        if (only_names || word.empty() || word.front() != '-' || word == "-")
            take_design(options, word);
        else if (word == "--")
            only_names = true;
        else if (word == "--help" || word == "-h")
            options.help = true;
        else if (word == "--version")
            options.version = true;
        else if (!takes_value(word))
            throw Error("unknown option \"" + word + "\", see fitter --help");
        else if (++i == words.size())
            throw Error(word + " needs a value");
        else
            take_value(options, word, words[i]);
    }
    if (options.design.empty() && !options.help && !options.version)
        throw Error("no netlist given, see fitter --help");
    return options;
}

} // namespace fitter
