#include "netlist.h"

#include "error.h"
#include "gen_dep_sys.h"

#include <algorithm>
#include <deque>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace fitter {
namespace {

using Words = std::vector<std::string_view>;

// Largest number of files in a chain of .search lines, including the file of the design.
constexpr std::size_t LONGEST_SEARCH = 16;

// A position in the files of the design; lines count from 1.
struct FilePosition
{
    Index file = 0;
    Index line = 0;
};

// One statement or cover row. Continued lines are one statement, at the position of the first line.
struct Statement
{
    FilePosition place;
    Words words;
};

// A name and its position.
struct Reference
{
    std::string_view name;
    FilePosition place;
};

// One of the files of the design, and the file whose .search line named it.
struct File
{
    Source source;
    Index includer = NONE; // NONE for the file of the design itself
};

struct Model
{
    Reference title;
    std::vector<Reference> inputs;
    std::vector<Reference> outputs;
    std::vector<Statement> cells;
    bool black_box = false;
};

// A text of a file in the form for messages: quoted, printable, and cut if it is long.
std::string quoted(std::string_view text)
{
    constexpr std::size_t LONGEST = 60;
    std::string out = "\"";
    for (char const c : text.substr(0, LONGEST))
        out += c >= ' ' && c <= '~' ? c : '?';
    return out + (text.size() > LONGEST ? "...\"" : "\"");
}

// Splits the text of a file into statements.
class Scanner
{
public:
    Scanner(std::string_view text, Index file) : m_text(text), m_place{file, 1} {}

    /// False at the end of the text.
    bool next(Statement &statement)
    {
        statement.words.clear();
        statement.place = m_place;
        while (m_at < m_text.size()) {
            char const c = m_text[m_at];
            if (c == '\n') {
                ++m_at;
                ++m_place.line;
                if (!statement.words.empty())
                    return true;
                statement.place = m_place;
            } else if (c == '#')
                m_at = std::min(m_text.find('\n', m_at), m_text.size());
            else if (is_blank(c))
                ++m_at;
            else if (std::size_t const length = continuation_length()) {
                m_at += length;
                ++m_place.line;
            } else
                statement.words.push_back(word());
        }
        return !statement.words.empty();
    }

private:
    static bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v'; }

    // Length of a backslash and the line end after it; 0 if there is none at this position.
    std::size_t continuation_length() const
    {
        if (m_text[m_at] != '\\')
            return 0;
        if (m_text.substr(m_at + 1, 1) == "\n")
            return 2;
        return m_text.substr(m_at + 1, 2) == "\r\n" ? 3 : 0;
    }

    std::string_view word()
    {
        std::size_t const begin = m_at;
        do
            ++m_at;
        while (m_at < m_text.size() && !is_blank(m_text[m_at]) && m_text[m_at] != '\n' && m_text[m_at] != '#' &&
               continuation_length() == 0);
        return m_text.substr(begin, m_at - begin);
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    FilePosition m_place;
};

class Reader
{
public:
    explicit Reader(Source design) { m_files.push_back({std::move(design), NONE}); }

    std::unique_ptr<Netlist> read()
    {
        // The loop appends the files that .search lines name.
        for (Index file = 0; file < m_files.size(); ++file)
            read_models(file);
        m_netlist.name = m_models.front().title.name;
        build();
        check_drivers();
        return std::move(m_owned_netlist);
    }

private:
    std::string const &file_name(FilePosition place) const { return m_files[place.file].source.name; }

    [[noreturn]] void fail(FilePosition place, std::string const &text) const
    {
        throw Error(file_name(place) + ":" + std::to_string(place.line) + ": " + text);
    }

    // First pass: the texts become models and statements.

    void read_models(Index file)
    {
        Source const &source = m_files[file].source;
        Scanner scanner(source.text, file);
        Statement statement;
        m_in_model = false;
        while (scanner.next(statement))
            take(statement);
        if (m_models.empty())
            throw Error(source.name + ": no .model, the file is empty");
    }

    void take(Statement const &statement)
    {
        std::string_view const keyword = statement.words.front();
        if (keyword == ".model")
            return begin_model(statement);
        if (keyword == ".search")
            return take_search(statement);
        if (!m_in_model)
            fail(statement.place, "expected .model, found " + quoted(keyword));
        if (keyword.front() != '.')
            return take_cover_row(statement);
        m_cover_inputs = NONE;
        Model &model = m_models.back();
        if (keyword == ".inputs")
            append_names(model.inputs, statement);
        else if (keyword == ".outputs")
            append_names(model.outputs, statement);
        else if (keyword == ".names")
            take_names(model, statement);
        else if (keyword == ".latch" || keyword == ".subckt")
            model.cells.push_back(statement);
        else if (keyword == ".blackbox")
            model.black_box = true;
        else if (keyword == ".end")
            m_in_model = false;
        else if (keyword != ".clock")
            fail(statement.place, "cannot read " + quoted(keyword));
    }

    void begin_model(Statement const &statement)
    {
        if (statement.words.size() != 2)
            fail(statement.place, ".model needs one name");
        Reference const title{statement.words[1], statement.place};
        auto const [former, is_new] = m_model_of_name.emplace(title.name, m_models.size());
        if (!is_new)
            fail(title.place, "model " + quoted(title.name) + " is already defined at " +
                                  place_text(m_models[former->second].title.place, title.place));
        m_models.emplace_back();
        m_models.back().title = title;
        m_in_model = true;
        m_cover_inputs = NONE;
    }

    // "line 3" for a position in the same file as `from`, "lib.blif:3" for another file
    std::string place_text(FilePosition place, FilePosition from) const
    {
        std::string const line = std::to_string(place.line);
        return place.file == from.file ? "line " + line : file_name(place) + ":" + line;
    }

    void take_search(Statement const &statement)
    {
        if (statement.words.size() != 2)
            fail(statement.place, ".search needs one file");
        m_cover_inputs = NONE;
        Source source = find_searched(std::string(statement.words[1]), m_files[statement.place.file].source);
        if (source.path.empty())
            fail(statement.place, "cannot find " + quoted(statement.words[1]));
        check_chain(statement, source);
        bool const is_known = std::any_of(m_files.begin(), m_files.end(),
                                          [&](File const &file) { return file.source.path == source.path; });
        if (is_known)
            return;
        source.text = read_file(source.path);
        m_files.push_back({std::move(source), statement.place.file});
    }

    // Fails if the chain of .search lines that leads from the file of the design to `searched` is a circle or too long.
    // The loop follows it backwards.
    void check_chain(Statement const &statement, Source const &searched) const
    {
        std::size_t length = 1;
        std::string way = searched.name;
        for (Index file = statement.place.file; file != NONE; file = m_files[file].includer) {
            Source const &includer = m_files[file].source;
            way.insert(0, includer.name + " -> ");
            if (includer.path == searched.path)
                fail(statement.place, ".search lines form a circle: " + way);
            ++length;
        }
        if (length > LONGEST_SEARCH)
            fail(statement.place, ".search leads through more than " + std::to_string(LONGEST_SEARCH) + " files");
    }

    static void append_names(std::vector<Reference> &names, Statement const &statement)
    {
        for (std::size_t i = 1; i < statement.words.size(); ++i)
            names.push_back({statement.words[i], statement.place});
    }

    void take_names(Model &model, Statement const &statement)
    {
        if (statement.words.size() < 2)
            fail(statement.place, ".names needs an output");
        m_cover_inputs = static_cast<Index>(statement.words.size() - 2);
        m_cover_value = '\0';
        if (m_cover_inputs > LUT_INPUTS)
            fail(statement.place,
                 ".names with " + std::to_string(m_cover_inputs) + " inputs, a LUT has " + std::to_string(LUT_INPUTS));
        model.cells.push_back(statement);
    }

    // The function of a LUT has no effect on its site. The rows are checked all the same, because a file that is broken
    // here is probably broken elsewhere.
    void take_cover_row(Statement const &row)
    {
        if (m_cover_inputs == NONE)
            fail(row.place, "expected a statement, found " + quoted(row.words.front()));
        std::size_t const columns = m_cover_inputs == 0 ? 1 : 2;
        if (row.words.size() != columns)
            fail(row.place,
                 "cover row of " + std::to_string(row.words.size()) + " columns, expected " + std::to_string(columns));
        std::string_view const plane = columns == 2 ? row.words.front() : std::string_view();
        if (plane.size() != m_cover_inputs || plane.find_first_not_of("01-") != std::string_view::npos)
            fail(row.place,
                 "cover row " + quoted(plane) + ", expected " + std::to_string(m_cover_inputs) + " of 0, 1 and -");
        std::string_view const value = row.words.back();
        if (value != "0" && value != "1")
            fail(row.place, "cover value " + quoted(value) + ", expected 0 or 1");
        if (m_cover_value != '\0' && m_cover_value != value.front())
            fail(row.place, "cover with rows for both 0 and 1");
        m_cover_value = value.front();
    }

    // Second pass: the first model becomes cells and nets.

    void build()
    {
        Model const &top = m_models.front();
        if (top.black_box)
            fail(top.title.place, "model " + quoted(top.title.name) + " is a black box, there is nothing to fit");
        for (Reference const &input : top.inputs)
            connect_output(input, add_cell(CellKind::INPUT_PAD, input.name));
        for (Statement const &statement : top.cells)
            build_cell(statement);
        for (Reference const &output : top.outputs)
            connect_input(output, add_cell(CellKind::OUTPUT_PAD, output.name));
        if (m_netlist.cells.empty())
            fail(top.title.place, "model " + quoted(top.title.name) + " has no cells, there is nothing to fit");
    }

    void build_cell(Statement const &statement)
    {
        std::string_view const keyword = statement.words.front();
        if (keyword == ".names")
            build_lut(statement);
        else if (keyword == ".latch")
            build_flop(statement);
        else
            build_macro(statement);
    }

    void build_lut(Statement const &statement)
    {
        Words const &words = statement.words;
        Index const cell = add_cell(CellKind::LUT, words.back());
        for (std::size_t i = 1; i + 1 < words.size(); ++i)
            connect_input({words[i], statement.place}, cell);
        connect_output({words.back(), statement.place}, cell);
    }

    // .latch input output [type control] [initial value]
    void build_flop(Statement const &statement)
    {
        Words const &words = statement.words;
        if (words.size() < 3 || words.size() > 6)
            fail(statement.place, ".latch with " + std::to_string(words.size() - 1) + " operands, expected 2 to 5");
        Index const cell = add_cell(CellKind::FLOP, words[2]);
        connect_input({words[1], statement.place}, cell);
        connect_output({words[2], statement.place}, cell);
        bool const has_control = words.size() >= 5;
        if (has_control)
            build_clock(statement, cell);
        if (words.size() == (has_control ? 6u : 4u) &&
            (words.back().size() != 1 || words.back() < "0" || words.back() > "3"))
            fail(statement.place, "initial value " + quoted(words.back()) + ", expected 0 to 3");
    }

    void build_clock(Statement const &statement, Index cell)
    {
        std::string_view const type = statement.words[3];
        std::string_view const control = statement.words[4];
        if (type != "re" && type != "fe")
            fail(statement.place,
                 "latch type " + quoted(type) + ", the device has flip-flops of types \"re\" and \"fe\"");
        m_netlist.cells[cell].falling = type == "fe";
        if (control == "NIL")
            return;
        Index const net = net_of({control, statement.place});
        m_netlist.cells[cell].clock = net;
        m_netlist.nets[net].clocked.push_back(cell);
    }

    void build_macro(Statement const &statement)
    {
        Words const &words = statement.words;
        if (words.size() < 2)
            fail(statement.place, ".subckt needs a model");
        auto const found = m_model_of_name.find(words[1]);
        if (found == m_model_of_name.end())
            fail(statement.place, ".subckt of unknown model " + quoted(words[1]));
        Model const &model = m_models[found->second];
        if (!model.black_box)
            fail(statement.place,
                 ".subckt of " + quoted(words[1]) + ", which is no black box: flatten the design first");
        std::unordered_map<std::string_view, std::string_view> const actuals = pin_connections(statement);
        Index const cell = add_cell(CellKind::MACRO, words[1]);
        std::size_t connected = 0;
        for (Reference const &formal : model.inputs) {
            auto const actual = actuals.find(formal.name);
            if (actual == actuals.end())
                fail(statement.place, "input " + quoted(formal.name) + " of " + quoted(words[1]) + " is not connected");
            connect_input({actual->second, statement.place}, cell);
            ++connected;
        }
        for (Reference const &formal : model.outputs)
            if (auto const actual = actuals.find(formal.name); actual != actuals.end()) {
                connect_output({actual->second, statement.place}, cell);
                ++connected;
            }
        if (connected != actuals.size())
            fail_on_unknown_pin(statement, model);
        if (!m_netlist.cells[cell].outputs.empty())
            m_netlist.cells[cell].name = m_netlist.nets[m_netlist.cells[cell].outputs.front()].name;
    }

    std::unordered_map<std::string_view, std::string_view> pin_connections(Statement const &statement) const
    {
        std::unordered_map<std::string_view, std::string_view> actuals;
        for (std::size_t i = 2; i < statement.words.size(); ++i) {
            std::string_view const word = statement.words[i];
            std::size_t const equals = word.find('=');
            if (equals == 0 || equals == std::string_view::npos || equals + 1 == word.size())
                fail(statement.place, "connection " + quoted(word) + ", expected pin=net");
            if (!actuals.emplace(word.substr(0, equals), word.substr(equals + 1)).second)
                fail(statement.place, "pin " + quoted(word.substr(0, equals)) + " is connected twice");
        }
        return actuals;
    }

    [[noreturn]] void fail_on_unknown_pin(Statement const &statement, Model const &model) const
    {
        auto const is_pin = [&](std::vector<Reference> const &pins, std::string_view name) {
            return std::any_of(pins.begin(), pins.end(), [&](Reference const &pin) { return pin.name == name; });
        };
        for (std::size_t i = 2; i < statement.words.size(); ++i) {
            std::string_view const pin = statement.words[i].substr(0, statement.words[i].find('='));
            if (!is_pin(model.inputs, pin) && !is_pin(model.outputs, pin))
                fail(statement.place, quoted(model.title.name) + " has no pin " + quoted(pin));
        }
        fail(model.title.place, "model " + quoted(model.title.name) + " names a pin twice");
    }

    Index add_cell(CellKind kind, std::string_view name)
    {
        m_netlist.cells.emplace_back();
        m_netlist.cells.back().kind = kind;
        m_netlist.cells.back().name = name;
        return static_cast<Index>(m_netlist.cells.size() - 1);
    }

    // The net with a name; it is created at the first mention, whose position is stored for messages.
    Index net_of(Reference const &reference)
    {
        auto const [found, is_new] = m_net_of_name.emplace(reference.name, static_cast<Index>(m_netlist.nets.size()));
        if (is_new) {
            m_netlist.nets.emplace_back();
            m_netlist.nets.back().name = reference.name;
            m_first_place.push_back(reference.place);
            m_driver_place.emplace_back();
        }
        return found->second;
    }

    void connect_input(Reference const &reference, Index cell)
    {
        Index const net = net_of(reference);
        m_netlist.nets[net].sinks.push_back(cell);
        m_netlist.cells[cell].inputs.push_back(net);
    }

    void connect_output(Reference const &reference, Index cell)
    {
        Index const net = net_of(reference);
        if (m_netlist.nets[net].driver != NONE)
            fail(reference.place, "net " + quoted(reference.name) + " is already driven at " +
                                      place_text(m_driver_place[net], reference.place));
        m_netlist.nets[net].driver = cell;
        m_driver_place[net] = reference.place;
        m_netlist.cells[cell].outputs.push_back(net);
    }

    void check_drivers() const
    {
        auto const has_no_driver = [](Net const &net) { return net.driver == NONE; };
        auto const first = std::find_if(m_netlist.nets.begin(), m_netlist.nets.end(), has_no_driver);
        if (first == m_netlist.nets.end())
            return;
        auto const others = std::count_if(first + 1, m_netlist.nets.end(), has_no_driver);
        fail(m_first_place[static_cast<std::size_t>(first - m_netlist.nets.begin())],
             "net " + quoted(first->name) + " has no driver" +
                 (others == 0 ? "" : " (" + std::to_string(others) + " more like it)"));
    }

    std::deque<File> m_files; // a deque, so that texts keep their address when files are appended
    bool m_in_model = false;
    Index m_cover_inputs = NONE; // number of inputs of the last .names; NONE if no row of its cover may follow
    char m_cover_value = '\0';   // value of the rows of that cover; '\0' before its first row
    std::vector<Model> m_models;
    std::unordered_map<std::string_view, std::size_t> m_model_of_name;

    std::unique_ptr<Netlist> m_owned_netlist = std::make_unique<Netlist>();
    Netlist &m_netlist = *m_owned_netlist;
    std::unordered_map<std::string_view, Index> m_net_of_name;
    std::vector<FilePosition> m_first_place;  // by net: its first mention in the order of build()
    std::vector<FilePosition> m_driver_place; // by net: where its driver is
};

} // namespace

void CellClearer::clear_flags(GEN_DYN_FLAG const &flag)
{
    for (Cell const &cell : m_cells)
        cell.marks.clear_flag(flag);
}

Netlist::~Netlist()
{
    GEN_DEP::memory_is_being_invalidated(this);
}

Index Netlist::count(CellKind kind) const
{
    return static_cast<Index>(
        std::count_if(cells.begin(), cells.end(), [kind](Cell const &cell) { return cell.kind == kind; }));
}

std::unique_ptr<Netlist> read_blif(Source design)
{
    return Reader(std::move(design)).read();
}

} // namespace fitter
