// The sample fitter: its reader, packer, placer and router on small designs, and the tool as a process.
#include "checked_sum.h"
#include "draws.h"
#include "error.h"
#include "fingerprint.h"
#include "gen_machine_sys.h"
#include "gen_path_sys.h"
#include "machine.h"
#include "options.h"
#include "output.h"
#include "report.h"
#include "source.h"
#include "tests/examples/fitter_runs.h"
#include "tests/support/platform.h"
#include "tests/support/temp_dir.h"
#include "text.h"
#include "undo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <utility>

namespace {

using fitter::CellKind;
using fitter::Index;
using fitter::NONE;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

std::string error_of(std::string const &text)
{
    return error_in([&] { read(text); });
}

// --- The small helpers.

TEST(FitterCheckedSum, ReportsAnOverflow)
{
    constexpr std::int64_t MOST = std::numeric_limits<std::int64_t>::max();
    fitter::CheckedSum sum("cost of it");
    sum.add(MOST);
    EXPECT_EQ(sum.value(), MOST);
    sum.add(1);
    sum.add(-2); // the final sum would fit, but the one before it didn't
    EXPECT_EQ(error_in([&] { sum.value(); }), "the cost of it is beyond 64 bits");
}

TEST(FitterDraws, TakeTwoNumbersOfTheGenerator)
{
    EXPECT_EQ(fitter::Draws(0).below(1u << 30), (38u << 15) + 7719);
    fitter::Draws draws(1);
    std::set<int> drawn;
    for (int i = 0; i < 200; ++i) {
        drawn.insert(draws.between(-3, 3));
        EXPECT_LT(draws.below(5), 5u);
        double const fraction = draws.fraction();
        EXPECT_TRUE(fraction >= 0.0 && fraction < 1.0) << fraction;
    }
    EXPECT_THAT(drawn, ElementsAre(-3, -2, -1, 0, 1, 2, 3));
    EXPECT_NE(fitter::Draws(4294967295u).below(1000000), fitter::Draws(4294967294u).below(1000000));
}

TEST(FitterMachine, ListsItsFacts)
{
    int processors = 0;
    int cores = 0;
    GEN_MACHINE_INFO::get_logical_cpu_count(&processors);
    GEN_MACHINE_INFO::get_core_cpu_count(&cores);
    std::string const facts = fitter::machine_facts();
    EXPECT_THAT(facts, StartsWith(std::to_string(processors) + " processor"));
    EXPECT_THAT(facts, HasSubstr(", " + std::to_string(cores) + " core"));
    EXPECT_THAT(facts, HasSubstr(" GiB memory, "));
    EXPECT_THAT(facts, testing::Not(HasSubstr(", 0.00 GiB")));
    EXPECT_THAT(facts, testing::EndsWith(", host " + gen_get_host_name()));
}

// --- The reader.

TEST(FitterNetlist, ReadsCellsAndNets)
{
    auto const netlist = read(".model top\n.inputs a b clk\n.outputs q y\n"
                              ".names a b y\n11 1\n"
                              ".latch y q re clk 2\n"
                              ".end\n");
    EXPECT_EQ(netlist->name, "top");
    EXPECT_EQ(netlist->count(CellKind::INPUT_PAD), 3u);
    EXPECT_EQ(netlist->count(CellKind::OUTPUT_PAD), 2u);
    EXPECT_EQ(netlist->count(CellKind::LUT), 1u);
    EXPECT_EQ(netlist->count(CellKind::FLOP), 1u);
    ASSERT_EQ(netlist->nets.size(), 5u);
    for (fitter::Net const &net : netlist->nets) {
        ASSERT_NE(net.driver, NONE) << net.name;
        EXPECT_EQ(net.sinks.size(), net.name == "clk" ? 0u : net.name == "y" ? 2u : 1u) << net.name;
        EXPECT_EQ(net.clocked.size(), net.name == "clk" ? 1u : 0u) << net.name;
    }
}

// All describe the same design: one LUT that reads a and b.
constexpr char const *SAME_DESIGNS[] = {
    ".model t\n.inputs a b\n.outputs y\n.names a b y\n11 1\n.end\n",
    ".model t\r\n.inputs a b\r\n.outputs y\r\n.names a b y\r\n11 1\r\n.end\r\n",
    ".model t\n.inputs a b\n.outputs y\n.names a b y\n11 1", // no .end, no last line end
    "# head\n\n.model t # name\n.inputs a\n.inputs b\n.outputs y\n.names a b y # and\n# row\n11 1\n.end\n# tail \\",
    ".model t\n.inputs \\\na \\\r\n b\n.outputs\\\n y\n.names a b\\\ny\n11 1\n.end\n",
    "\t.model\tt\n .inputs  a b\n.clock a\n.outputs y\n.names a b y\n.end\n.model rest\n.inputs p\n.blackbox\n.end\n",
    "#\\\n.model t\n.inputs a b\n.outputs y\n.names a b y\n00 0\n-1 0\n.end", // a comment doesn't continue
};
TEST(FitterNetlist, ReadsEverySpelling)
{
    for (char const *text : SAME_DESIGNS) {
        std::unique_ptr<fitter::Netlist> netlist;
        ASSERT_NO_THROW(netlist = read(text)) << text << "\n" << error_of(text);
        EXPECT_EQ(netlist->name, "t") << text;
        EXPECT_EQ(netlist->cells.size(), 4u) << text;
        EXPECT_EQ(netlist->nets.size(), 3u) << text;
        EXPECT_EQ(netlist->count(CellKind::LUT), 1u) << text;
    }
}

TEST(FitterNetlist, TakesBlackBoxesAsCells)
{
    auto const netlist = read(".model t\n.inputs a\n.outputs y\n"
                              ".subckt ram d=a q=y\n.subckt ram d=y\n"
                              ".end\n.model ram\n.inputs d\n.outputs q\n.blackbox\n.end\n");
    EXPECT_EQ(netlist->count(CellKind::MACRO), 2u);
    EXPECT_EQ(netlist->nets.size(), 2u);
}

TEST(FitterNetlist, ReadsALineOfAMillionNames)
{
    std::string text = ".model t\n.outputs y\n.names y\n.inputs";
    for (int i = 0; i < 1000000; ++i)
        text += " i" + std::to_string(i);
    EXPECT_EQ(read(text)->count(CellKind::INPUT_PAD), 1000000u);
}

struct ErrorCase
{
    char const *text;
    char const *message;
};
constexpr ErrorCase ERROR_CASES[] = {
    // the shape of the file
    {"", "t.blif: no .model, the file is empty"},
    {"\n# nothing\n", "t.blif: no .model, the file is empty"},
    {"\n.inputs a\n", "t.blif:2: expected .model, found \".inputs\""},
    {"\x7f"
     "ELF\x01\n",
     "t.blif:1: expected .model, found \"?ELF?\""},
    {".model\n", "t.blif:1: .model needs one name"},
    {".model a b\n", "t.blif:1: .model needs one name"},
    {".model t\n.end\n.inputs a\n", "t.blif:3: expected .model, found \".inputs\""},
    {".model t\n.end\n\n.model t\n.end\n", "t.blif:4: model \"t\" is already defined at line 1"},
    {".model t\n.gate nand2 a=b\n", "t.blif:2: cannot read \".gate\""},
    {".model t\n.inputs a\n11 1\n", "t.blif:3: expected a statement, found \"11\""},
    {".model t\n.end\n", "t.blif:1: model \"t\" has no cells, there is nothing to fit"},
    {".model t\n.inputs a\n.blackbox\n.end\n", "t.blif:1: model \"t\" is a black box, there is nothing to fit"},
    // .names
    {".model t\n.names\n", "t.blif:2: .names needs an output"},
    {".model t\n.names a b c d e y\n", "t.blif:2: .names with 5 inputs, a LUT has 4"},
    {".model t\n.names a \\\n b y\n1 1\n", "t.blif:4: cover row \"1\", expected 2 of 0, 1 and -"},
    {".model t\n.names a b y\n12 1\n", "t.blif:3: cover row \"12\", expected 2 of 0, 1 and -"},
    {".model t\n.names a b y\n11\n", "t.blif:3: cover row of 1 columns, expected 2"},
    {".model t\n.names y\n1 1\n", "t.blif:3: cover row of 2 columns, expected 1"},
    {".model t\n.names y\n2\n", "t.blif:3: cover value \"2\", expected 0 or 1"},
    {".model t\n.names a y\n1 1\n0 0\n", "t.blif:4: cover with rows for both 0 and 1"},
    // .latch
    {".model t\n.latch a\n", "t.blif:2: .latch with 1 operands, expected 2 to 5"},
    {".model t\n.latch a q re c 0 x\n", "t.blif:2: .latch with 6 operands, expected 2 to 5"},
    {".model t\n.latch a q ah c\n",
     "t.blif:2: latch type \"ah\", the device has flip-flops of types \"re\" and \"fe\""},
    {".model t\n.latch a q re c 4\n", "t.blif:2: initial value \"4\", expected 0 to 3"},
    {".model t\n.latch a q x\n", "t.blif:2: initial value \"x\", expected 0 to 3"},
    // .subckt
    {".model t\n.subckt\n", "t.blif:2: .subckt needs a model"},
    {".model t\n.subckt ram a=b\n", "t.blif:2: .subckt of unknown model \"ram\""},
    {".model t\n.subckt u a=b\n.model u\n.inputs a\n.end\n",
     "t.blif:2: .subckt of \"u\", which is no black box: flatten the design first"},
    {".model t\n.subckt u a\n.model u\n.inputs a\n.blackbox\n", "t.blif:2: connection \"a\", expected pin=net"},
    {".model t\n.subckt u a=\n.model u\n.inputs a\n.blackbox\n", "t.blif:2: connection \"a=\", expected pin=net"},
    {".model t\n.subckt u a=x a=y\n.model u\n.inputs a\n.blackbox\n", "t.blif:2: pin \"a\" is connected twice"},
    {".model t\n.subckt u\n.model u\n.inputs a\n.blackbox\n", "t.blif:2: input \"a\" of \"u\" is not connected"},
    {".model t\n.subckt u a=x b=y\n.model u\n.inputs a\n.blackbox\n", "t.blif:2: \"u\" has no pin \"b\""},
    {".model t\n.subckt u a=x\n.model u\n.inputs a a\n.blackbox\n", "t.blif:3: model \"u\" names a pin twice"},
    // drivers
    {".model t\n.inputs a a\n", "t.blif:2: net \"a\" is already driven at line 2"},
    {".model t\n.inputs a\n.names a\n1\n", "t.blif:3: net \"a\" is already driven at line 2"},
    {".model t\n.inputs a\n.latch a q\n.names a q\n", "t.blif:4: net \"q\" is already driven at line 3"},
    {".model t\n.inputs a\n.names a b y\n11 1\n", "t.blif:3: net \"b\" has no driver"},
    {".model t\n.outputs y z\n.names a y\n", "t.blif:3: net \"a\" has no driver (1 more like it)"},
    {".model t\n.inputs a\n.latch a q re c 0\n", "t.blif:3: net \"c\" has no driver"},
};
TEST(FitterNetlist, NamesFileAndLineOfAFault)
{
    for (ErrorCase const &c : ERROR_CASES)
        EXPECT_EQ(error_of(c.text), c.message) << c.text;
}

TEST(FitterNetlist, ShortensALongNameInAMessage)
{
    EXPECT_EQ(error_of(std::string(100, 'x')), "t.blif:1: expected .model, found \"" + std::string(60, 'x') + "...\"");
}

// With any content of the file, the result is a netlist with a driver for each net or an Error.
TEST(FitterNetlist, SurvivesGarbage)
{
    std::string const good = make_design(40);
    fitter::Draws draws(3);
    int faults = 0;
    for (int round = 0; round < 2000; ++round) {
        std::string text = good;
        for (std::uint32_t i = 0; i <= draws.below(4); ++i) {
            std::size_t const at = draws.below(static_cast<std::uint32_t>(text.size()));
            if (draws.below(3) == 0)
                text.erase(at, draws.below(30));
            else
                text[at] = static_cast<char>(draws.below(256));
        }
        try {
            auto const netlist = read(text);
            for (fitter::Net const &net : netlist->nets)
                EXPECT_NE(net.driver, NONE) << text;
        } catch (fitter::Error const &error) {
            EXPECT_THAT(error.what(), StartsWith("t.blif")) << text;
            ++faults;
        }
    }
    EXPECT_GT(faults, 1000);
    EXPECT_LT(faults, 2000);
}

TEST(FitterNetlist, NamesAFileThatCannotBeRead)
{
    TempDir const dir;
    for (std::string const &path : {dir.text("none.blif"), dir.text("no/such/place.blif"), dir.text()})
        EXPECT_THROW(fitter::read_file(path), fitter::Error) << path;
    EXPECT_EQ(fitter::read_file(dir.write("some.blif", std::string("a\r\n\0b", 5))), std::string("a\r\n\0b", 5));
}

// --- The design's files.

// A project with a library. The paths of zel_gen contain both during the lifetime of the object.
class Project
{
public:
    Project()
    {
        gen_set_project_dir_path(m_dir.text("p/"));
        gen_set_project_library_paths("../lib");
    }
    ~Project()
    {
        gen_set_project_library_paths("");
        gen_set_project_dir_path("");
    }

    TempDir const &dir() const { return m_dir; }
    std::string library(std::string const &name) const { return m_dir.text("lib/" + name); }

private:
    TempDir m_dir;
};

TEST(FitterSource, FindsTheDesignInTheProjectThenInItsLibraries)
{
    Project const project;
    project.dir().write("lib/a.blif", "library");
    fitter::Source const in_library = fitter::read_design("a.blif");
    EXPECT_EQ(in_library.text, "library");
    EXPECT_EQ(std::filesystem::path(in_library.name), std::filesystem::path(project.library("a.blif")));

    project.dir().write("p/a.blif", "project");
    project.dir().write("p/sub/b.blif", "below");
    for (auto const &[name, text] :
         std::map<std::string, std::string>{{"a.blif", "project"}, {"sub/b.blif", "below"}}) {
        fitter::Source const found = fitter::read_design(name);
        EXPECT_EQ(found.text, text);
        EXPECT_EQ(found.name, name);
    }
    EXPECT_EQ(fitter::read_design(project.library("a.blif")).text, "library"); // an absolute path is taken unchanged
    EXPECT_EQ(error_in([] { fitter::read_design("b.blif"); }),
              "cannot find \"b.blif\" in the project, its libraries or the installation");
}

TEST(FitterSource, ListsTheFilesOfADesign)
{
    Project const project;
    for (char const *name : {"p/a.blif", "p/a.v", "p/a.txt", "p/ab.v", "lib/a.v", "lib/a.vhd"})
        project.dir().write(name, "");
    std::vector<std::string> names = fitter::list_sources(fitter::read_design("a.blif"));
    for (std::string &name : names)
        if (std::size_t const directory = name.find("lib/"); directory != std::string::npos)
            name.erase(0, directory);
    EXPECT_THAT(names, ElementsAre("a.blif (project)", "a.v (project)", "lib/a.vhd (project library)"));
}

std::string box(std::string const &name)
{
    return ".model " + name + "\n.inputs d\n.blackbox\n.end\n";
}

TEST(FitterSource, TakesModelsOfSearchedFiles)
{
    Project const project;
    project.dir().write("p/top.blif", ".search sub/a.blif\n.model top\n.inputs x\n.search shared.blif\n"
                                      ".subckt a d=x\n.subckt b d=x\n.subckt shared d=x\n");
    project.dir().write("p/sub/a.blif", box("a") + ".search b.blif\n.search shared.blif");
    project.dir().write("p/sub/b.blif", box("b")); // next to the file that names it
    project.dir().write("lib/shared.blif", box("shared"));
    auto const netlist = fitter::read_blif(fitter::read_design("top.blif"));
    EXPECT_EQ(netlist->name, "top");
    EXPECT_EQ(netlist->count(CellKind::MACRO), 3u);
}

TEST(FitterSource, ReportsWhereASearchFails)
{
    Project const project;
    TempDir const &dir = project.dir();
    std::string const good = ".model top\n.inputs x\n.end\n";
    dir.write("p/itself.blif", good + ".search itself.blif\n");
    dir.write("p/one.blif", good + ".search sub/two.blif\n");
    dir.write("p/sub/two.blif", "\n.search three.blif\n");
    dir.write("p/sub/three.blif", ".search one.blif\n");
    dir.write("p/missing.blif", good + ".search sub/gone.blif\n");
    dir.write("p/unnamed.blif", good + ".search\n");
    dir.write("p/again.blif", good + ".search sub/top.blif\n");
    dir.write("p/sub/top.blif", "\n" + box("top"));
    dir.write("p/faulty.blif", good + ".search sub/fault.blif\n");
    dir.write("p/sub/fault.blif", ".inputs a\n");
    for (int i = 1; i <= 16; ++i)
        dir.write("p/deep" + std::to_string(i) + ".blif",
                  box("m" + std::to_string(i)) + ".search deep" + std::to_string(i + 1) + ".blif\n");
    dir.write("p/deep17.blif", box("m17"));
    for (ErrorCase const &c : std::initializer_list<ErrorCase>{
             {"itself.blif", "itself.blif:4: .search lines form a circle: itself.blif -> itself.blif"},
             {"one.blif", "sub/three.blif:1: .search lines form a circle: "
                          "one.blif -> sub/two.blif -> sub/three.blif -> one.blif"},
             {"missing.blif", "missing.blif:4: cannot find \"sub/gone.blif\""},
             {"unnamed.blif", "unnamed.blif:4: .search needs one file"},
             {"again.blif", "sub/top.blif:2: model \"top\" is already defined at again.blif:1"},
             {"faulty.blif", "sub/fault.blif:1: expected .model, found \".inputs\""},
             {"deep1.blif", "deep16.blif:5: .search leads through more than 16 files"},
         })
        EXPECT_EQ(error_in([&] { fitter::read_blif(fitter::read_design(c.text)); }), c.message) << c.text;
    // One file less is not too many: the only error is that the first model is a black box.
    EXPECT_EQ(error_in([] { fitter::read_blif(fitter::read_design("deep2.blif")); }),
              "deep2.blif:1: model \"m2\" is a black box, there is nothing to fit");
}

// --- Objects that depend on a netlist.

TEST(FitterCellMark, IsOnNoCellAtFirst)
{
    auto const netlist = read(make_design(20));
    fitter::CellMark kept(*netlist, "kept");
    kept.put_on(3);
    for (int round = 0; round < 100; ++round) { // far more than there are bits
        fitter::CellMark mark(*netlist, "mark");
        for (Index cell = 0; cell < netlist->cells.size(); ++cell) {
            EXPECT_FALSE(mark.is_on(cell)) << "round " << round << " cell " << cell;
            mark.put_on(cell);
            EXPECT_TRUE(mark.is_on(cell));
        }
        EXPECT_TRUE(kept.is_on(3)) << "round " << round;
        EXPECT_FALSE(kept.is_on(4)) << "round " << round;
    }
}

TEST(FitterNetlistLink, IsNullAfterItsNetlistIsDestroyed)
{
    auto first = read(make_design(20));
    auto const second = read(make_design(20));
    fitter::NetlistLink link(*first);
    std::vector<fitter::NetlistLink> const copies(2, link);
    fitter::NetlistLink moved_on = link;
    moved_on = fitter::NetlistLink(*second);
    EXPECT_EQ(link.get(), first.get());
    EXPECT_EQ(copies[1].get(), first.get());
    first.reset();
    EXPECT_EQ(link.get(), nullptr);
    EXPECT_EQ(copies[0].get(), nullptr);
    EXPECT_EQ(copies[1].get(), nullptr);
    EXPECT_EQ(moved_on.get(), second.get());
    moved_on = fitter::NetlistLink(moved_on);
    EXPECT_EQ(moved_on.get(), second.get());
}

// --- The packer.

TEST(FitterPack, PutsEachCellIntoOneLegalBlock)
{
    for (unsigned const luts : {8u, 50u, 300u}) {
        auto const netlist = read(make_design(luts));
        fitter::Packing const packing = pack(*netlist);
        std::map<Index, int> times; // by cell
        for (fitter::Block const &block : packing.blocks)
            if (block.is_pad)
                ++times[block.item];
        for (fitter::Cluster const &cluster : packing.clusters) {
            EXPECT_LE(cluster.elements.size(), fitter::CLUSTER_ELEMENTS);
            std::set<Index> inputs, outputs, clocks;
            for (Index const index : cluster.elements) {
                fitter::LogicElement const &element = packing.elements[index];
                for (Index const cell : {element.lut, element.flop})
                    if (cell != NONE)
                        ++times[cell];
                inputs.insert(element.inputs.begin(), element.inputs.end());
                outputs.insert(element.output);
                if (element.clock != NONE)
                    clocks.insert(element.clock);
            }
            for (Index const output : outputs)
                inputs.erase(output);
            EXPECT_LE(inputs.size(), fitter::CLUSTER_INPUTS);
            EXPECT_LE(clocks.size(), 1u);
        }
        EXPECT_EQ(times.size(), netlist->cells.size());
        for (auto const &[cell, count] : times)
            EXPECT_EQ(count, 1) << netlist->cells[cell].name;
    }
}

TEST(FitterPack, PairsALutWithTheFlopThatIsItsOnlyReader)
{
    fitter::Packing const paired = pack(*read(".model t\n.inputs a c\n.outputs q\n.names a n\n1 1\n"
                                              ".latch n q re c 0\n"));
    ASSERT_EQ(paired.elements.size(), 1u);
    EXPECT_NE(paired.elements[0].lut, NONE);
    EXPECT_NE(paired.elements[0].flop, NONE);
    fitter::Packing const unpaired = pack(*read(".model t\n.inputs a c\n.outputs q n\n.names a n\n1 1\n"
                                                ".latch n q re c 0\n"));
    EXPECT_EQ(unpaired.elements.size(), 2u);
}

TEST(FitterPack, KeepsClocksAndEdgesSeparate)
{
    fitter::Packing const packing =
        pack(*read(".model t\n.inputs a c d\n.outputs p q r s\n.latch a p re c 0\n.latch a q fe c 0\n"
                   ".latch a r re d 0\n.latch a s re c 0\n"));
    EXPECT_EQ(packing.elements.size(), 4u);
    EXPECT_EQ(packing.clusters.size(), 3u);
}

TEST(FitterPack, LeavesClocksOutOfTheFabric)
{
    auto const netlist = read(make_design(60));
    for (fitter::FabricNet const &net : pack(*netlist).nets) {
        EXPECT_NE(netlist->nets[net.net].name, "clk");
        EXPECT_GE(net.blocks.size(), 2u) << netlist->nets[net.net].name;
    }
}

// --- A whole fit.

std::string check(fitter::Fit const &fit, fitter::Routing const &routing)
{
    return fitter::check_routing(fit.packing, fit.device, fit.placement, routing);
}

std::string check(fitter::Fit const &fit)
{
    return check(fit, fit.routing);
}

TEST(FitterPlace, GivesEachBlockASiteOfItsKind)
{
    for (std::uint32_t const seed : {0u, 1u, 2u, 3u}) {
        fitter::Fit const fit = make_fit(make_design(200), seed);
        std::set<Index> sites;
        ASSERT_EQ(fit.placement.site_of_block.size(), fit.packing.blocks.size());
        for (Index block = 0; block < fit.packing.blocks.size(); ++block) {
            Index const site = fit.placement.site_of_block[block];
            ASSERT_LT(site, fit.device.sites());
            EXPECT_TRUE(sites.insert(site).second) << "seed " << seed << " site " << site;
            EXPECT_EQ(fit.device.is_pad_site(site), fit.packing.blocks[block].is_pad) << "seed " << seed;
        }
        EXPECT_LT(fit.placement.wire_length, fit.placement.start_wire_length) << "seed " << seed;
        EXPECT_EQ(fit.placement.wire_length,
                  fitter::half_perimeter_wire_length(fit.packing, fit.device, fit.placement.site_of_block));
    }
}

// The expected numbers were recorded once; every platform must compute the same ones.
TEST(FitterPlace, IsTheSameForTheSameSeedOnEveryPlatform)
{
    struct Golden
    {
        std::uint32_t seed;
        std::uint64_t placed, routed, fingerprint;
    };
    for (Golden const &c : {Golden{1, 553, 639, 2372207431892899684u}, Golden{2, 557, 632, 2492102502016116075u},
                            Golden{4294967295u, 542, 614, 5806614909458734517u}}) {
        fitter::Fit const fit = make_fit(make_design(200), c.seed);
        EXPECT_EQ(fit.placement.wire_length, c.placed) << "seed " << c.seed;
        EXPECT_EQ(fit.routing.wire_length, c.routed) << "seed " << c.seed;
        EXPECT_EQ(fitter::fingerprint(fit), c.fingerprint) << "seed " << c.seed;
        EXPECT_EQ(fitter::result_text(fit), fitter::result_text(make_fit(make_design(200), c.seed)));
    }
}

TEST(FitterPlace, IsNotifiedWhenItsNetlistIsDestroyed)
{
    fitter::Fit fit = make_fit(make_design(30));
    EXPECT_EQ(fit.placement.netlist.get(), fit.netlist.get());
    fit.netlist.reset();
    EXPECT_EQ(fit.placement.netlist.get(), nullptr);
    TempDir const dir;
    EXPECT_EQ(error_in([&] { fitter::write_undo_file(dir.text(), fit.packing, fit.device, fit.placement); }),
              "the netlist of the placement is gone");
    EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
}

TEST(FitterPlace, ReportsThatItsMovesCannotBeWritten)
{
    fitter::Fit const fit = make_fit(make_design(30));
    TempDir const dir;
    dir.write("d/undo_redo.txt/inside", "");
    for (std::string const &place : {dir.text("d"), dir.text("none")})
        EXPECT_THAT(error_in([&] { fitter::write_undo_file(place, fit.packing, fit.device, fit.placement); }),
                    StartsWith("cannot write \"" + place + "/undo_redo.txt\": "));
    EXPECT_EQ(entry_names(dir.path() / "d"), std::set<std::string>{"undo_redo.txt"});
}

TEST(FitterPlace, WritesAnEmptyUndoFileWithoutMoves)
{
    fitter::Fit fit = make_fit(make_design(30));
    fit.placement.last_moves.clear();
    TempDir const dir;
    dir.write("undo_redo.txt", "old");
    fitter::write_undo_file(dir.text(), fit.packing, fit.device, fit.placement);
    EXPECT_EQ(dir.read("undo_redo.txt"), "");
}

// The commands after a heading of the undo file, from top to bottom.
std::vector<std::string> commands_of(std::string const &file, std::string const &heading)
{
    std::vector<std::string> commands;
    std::istringstream lines(file.substr(std::min(file.find(heading), file.size())));
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line) && line.size() > 1) // an empty line ends them
        if (std::size_t const command = line.find("swap "); command != std::string::npos)
            commands.push_back(line.substr(command, line.find_last_not_of('\r') + 1 - command));
    return commands;
}

TEST(FitterPlace, WritesTheMovesOfItsLastPassForUndo)
{
    TempDir const dir;
    fitter::Fit const fit = make_fit(make_design(200));
    fitter::write_undo_file(dir.text(), fit.packing, fit.device, fit.placement);
    std::string const file = dir.read("undo_redo.txt");
    EXPECT_THAT(file, StartsWith("Last pass of the placement"));
    EXPECT_THAT(file, HasSubstr("made: " + std::to_string(fit.placement.last_moves.size()) + " moves"));

    std::map<std::string, Index> site_of_name;
    for (Index site = 0; site < fit.device.sites(); ++site) {
        fitter::Point const at = fit.device.position(site);
        std::string const slot =
            fit.device.is_pad_site(site) ? "," + std::to_string(fit.device.pad_slot(site)) : std::string();
        site_of_name[std::to_string(at.x) + "," + std::to_string(at.y) + slot] = site;
    }
    std::vector<Index> sites = fit.placement.site_of_block;
    auto const carry_out = [&](std::string const &heading) {
        for (std::string const &command : commands_of(file, heading)) {
            std::size_t const blank = command.rfind(' ');
            Index const from = site_of_name.at(command.substr(5, blank - 5));
            Index const to = site_of_name.at(command.substr(blank + 1));
            for (Index &site : sites)
                site = site == from ? to : site == to ? from : site;
        }
    };
    ASSERT_FALSE(fit.placement.last_moves.empty());
    EXPECT_EQ(commands_of(file, "Undo Commands").size(), fit.placement.last_moves.size());
    carry_out("Undo Commands");
    EXPECT_NE(sites, fit.placement.site_of_block);
    EXPECT_EQ(std::set<Index>(sites.begin(), sites.end()).size(), sites.size());
    carry_out("Redo Commands");
    EXPECT_EQ(sites, fit.placement.site_of_block);
}

TEST(FitterPlace, HandlesTheSmallestDesigns)
{
    for (char const *text : {".model t\n.inputs a\n.outputs a\n", ".model t\n.inputs a\n", ".model t\n.names y\n",
                             ".model t\n.inputs a\n.outputs y\n.names a y\n1 1\n"}) {
        fitter::Fit const fit = make_fit(text);
        EXPECT_EQ(check(fit), "") << text;
        EXPECT_TRUE(fit.routing.is_legal()) << text;
    }
}

TEST(FitterPlace, ExpectsNoUseWithoutNets)
{
    fitter::Fit const fit = make_fit(".model t\n.inputs a b\n");
    EXPECT_EQ(fit.expected_use.peak, 0u);
    EXPECT_GT(make_fit(make_design(100)).expected_use.peak, make_fit(make_design(100)).expected_use.average);
}

TEST(FitterDevice, JoinsSegmentsBothWays)
{
    fitter::Device const device(3);
    EXPECT_EQ(device.segments(), 24u);
    std::set<std::string> names;
    for (Index segment = 0; segment < device.segments(); ++segment) {
        names.insert(device.segment_name(segment));
        std::vector<Index> const joined = device.segments_joined(segment);
        EXPECT_GE(joined.size(), 3u) << device.segment_name(segment);
        EXPECT_LE(joined.size(), 6u) << device.segment_name(segment);
        for (Index const other : joined)
            EXPECT_THAT(device.segments_joined(other), testing::Contains(segment))
                << device.segment_name(segment) << " and " << device.segment_name(other);
    }
    EXPECT_EQ(names.size(), 24u);
    EXPECT_THAT(
        device.segments_at_site(device.cluster_site(1, 2)),
        ElementsAre(device.horizontal(1, 2), device.horizontal(1, 3), device.vertical(1, 2), device.vertical(2, 2)));
    EXPECT_THAT(device.segments_at_site(device.pad_site(4, 0)), ElementsAre(device.vertical(3, 1)));
}

TEST(FitterDevice, HasALargestSize)
{
    std::string text = ".model t\n.inputs";
    for (int i = 0; i < 8000; ++i)
        text += " i" + std::to_string(i);
    EXPECT_EQ(fitter::Device::for_packing(pack(*read(text))).size(), 500);
    try {
        fitter::Device::for_packing(pack(*read(text + " one_more")));
        ADD_FAILURE() << "there is a device for 8001 pads";
    } catch (fitter::Error const &error) {
        EXPECT_STREQ(error.what(), "0 clusters and 8001 pads need a device of 501 columns, the largest has 500");
    }
}

// --- The router.

TEST(FitterRoute, ConnectsEveryNetWithinTheChannels)
{
    for (Index const width : {10u, 14u, 60u}) {
        fitter::Fit const fit = make_fit(make_design(300), 1, width);
        EXPECT_EQ(check(fit), "") << "width " << width;
        EXPECT_TRUE(fit.routing.is_legal()) << "width " << width;
        EXPECT_LE(fit.routing.peak_use, width);
        EXPECT_EQ(fit.routing.iterations > 1, width < 60) << "width " << width; // narrow ones need several
        EXPECT_LE(fit.routing.wire_length, fit.routing.converged_length) << "width " << width;
        for (std::size_t i = 0; i < fit.packing.nets.size(); ++i)
            EXPECT_FALSE(fit.routing.trees[i].empty()) << "width " << width << " net " << i;
    }
}

TEST(FitterRoute, ReportsThatTheChannelsAreTooNarrow)
{
    fitter::Fit const fit = make_fit(make_design(300), 1, 1);
    EXPECT_EQ(check(fit), "");
    EXPECT_FALSE(fit.routing.is_legal());
    EXPECT_GT(fit.routing.overused_segments, 0u);
    EXPECT_GT(fit.routing.peak_use, 1u);
    EXPECT_THAT(fitter::summary(fit), HasSubstr("legal         no, "));
}

TEST(FitterRoute, IsCheckedIndependently)
{
    fitter::Fit const good = make_fit(make_design(100));
    fitter::Routing const &routing = good.routing;
    ASSERT_EQ(check(good), "");
    auto const longest = static_cast<std::size_t>(
        std::max_element(routing.trees.begin(), routing.trees.end(),
                         [](fitter::Tree const &a, fitter::Tree const &b) { return a.size() < b.size(); }) -
        routing.trees.begin());
    ASSERT_GE(routing.trees[longest].size(), 3u);

    fitter::Routing cut = routing;
    cut.trees[longest].pop_back();
    EXPECT_THAT(check(good, cut), HasSubstr("does not reach block")) << longest;
    fitter::Routing torn = routing;
    torn.trees[longest].erase(torn.trees[longest].begin());
    EXPECT_NE(check(good, torn), "");
    fitter::Routing doubled = routing;
    doubled.trees[longest].push_back(doubled.trees[longest].front());
    EXPECT_THAT(check(good, doubled), HasSubstr("twice"));
    fitter::Routing hidden = routing;
    ++hidden.use[0];
    EXPECT_EQ(check(good, hidden), "the use of the segments is not that of the trees");
    fitter::Routing narrow = routing;
    narrow.channel_width = 1;
    EXPECT_EQ(check(good, narrow), "the count of overused segments is wrong");
}

// --- Timing.

TEST(FitterTiming, AddsLutsAndSegmentsAlongThePath)
{
    fitter::Fit const fit = make_fit(".model t\n.inputs a\n.outputs y\n.names a m\n1 1\n.names m n\n1 1\n"
                                     ".names n y\n1 1\n");
    // One cluster: wire from the input pad and to the output pad only.
    ASSERT_EQ(fit.packing.clusters.size(), 1u);
    ASSERT_EQ(fit.timing.path.size(), 5u);
    Index const wires = static_cast<Index>(fit.routing.wire_length);
    EXPECT_EQ(fit.timing.delay, 3 * fitter::LUT_DELAY + wires);
    EXPECT_EQ(fit.timing.path.back().arrival, fit.timing.delay);
    EXPECT_EQ(fit.timing.untimed_luts, 0u);
}

TEST(FitterTiming, CutsPathsAtFlops)
{
    fitter::Fit const fit = make_fit(".model t\n.inputs a c\n.outputs y\n.names a m\n1 1\n.latch m q re c 0\n"
                                     ".names q y\n1 1\n");
    EXPECT_EQ(fit.timing.path.size(), 3u);
}

TEST(FitterTiming, ReportsLutsOnLoops)
{
    fitter::Fit const fit = make_fit(".model t\n.inputs a\n.outputs y\n.names a n m\n11 1\n.names m n\n1 1\n"
                                     ".names n y\n1 1\n");
    EXPECT_EQ(fit.timing.untimed_luts, 3u);
    EXPECT_THAT(fitter::summary(fit), HasSubstr("3 LUTs on or after combinational loops, from lut m on"));
}

// --- Options.

TEST(FitterOptions, AreReadFromTheCommandLine)
{
    fitter::Options const options =
        fitter::parse_options({"--seed", "4294967295", "--channel-width", "9", "--out", "o", "--project", "p",
                               "--library", "l", "--library", "m", "--effort", "fast", "--", "-x.blif"});
    EXPECT_EQ(options.seed, 4294967295u);
    EXPECT_EQ(options.channel_width, 9u);
    EXPECT_EQ(options.output_directory, "o");
    EXPECT_EQ(options.project_directory, "p");
    EXPECT_EQ(options.libraries, "l;m");
    EXPECT_LT(options.effort, fitter::Options().effort);
    EXPECT_EQ(options.design, "-x.blif");
}

struct OptionErrorCase
{
    std::vector<std::string> words;
    char const *message;
};
TEST(FitterOptions, RejectsInvalidWords)
{
    for (OptionErrorCase const &c : std::vector<OptionErrorCase>{
             {{}, "no netlist given, see fitter --help"},
             {{""}, "the netlist's name is empty"},
             {{"a.blif", "b.blif"}, "more than one netlist: \"a.blif\" and \"b.blif\""},
             {{"--sed", "1", "a.blif"}, "unknown option \"--sed\", see fitter --help"},
             {{"a.blif", "--seed"}, "--seed needs a value"},
             {{"a.blif", "--out", ""}, "--out needs a directory"},
             {{"a.blif", "--library", ""}, "--library needs a directory"},
             {{"--seed", "-1"}, "--seed \"-1\", expected a number from 0 to 4294967295"},
             {{"--seed", "1x"}, "--seed \"1x\", expected a number from 0 to 4294967295"},
             {{"--seed", "4294967296"}, "--seed \"4294967296\", expected a number from 0 to 4294967295"},
             {{"--channel-width", "0"}, "--channel-width \"0\", expected a number from 1 to 100000"},
             {{"--channel-width", "100001"}, "--channel-width \"100001\", expected a number from 1 to 100000"},
             {{"--effort", "5"}, "--effort \"5\", expected fast, normal or high"},
         }) {
        try {
            fitter::parse_options(c.words);
            ADD_FAILURE() << "accepted: " << c.message;
        } catch (fitter::Error const &error) {
            EXPECT_STREQ(error.what(), c.message);
        }
    }
}

// --- The result file.

TEST(FitterResult, ReplacesTheFileWhole)
{
    TempDir const dir;
    for (char const *text : {"first, and longer", "second", ""}) {
        fitter::write_result(dir.text("r.txt"), text);
        EXPECT_EQ(dir.read("r.txt"), text);
        EXPECT_EQ(entry_names(dir.path()), std::set<std::string>{"r.txt"});
    }
    fitter::check_writable(dir.text("s.txt"));
    EXPECT_EQ(entry_names(dir.path()), std::set<std::string>{"r.txt"});
}

TEST(FitterResult, KeepsTheOldFileIfItCannotBeReplaced)
{
    TempDir const dir;
    dir.write("r.txt/inside", "kept"); // a directory where the file should go
    EXPECT_THROW(fitter::write_result(dir.text("r.txt"), "new"), fitter::Error);
    EXPECT_EQ(dir.read("r.txt/inside"), "kept");
    EXPECT_EQ(entry_names(dir.path()), std::set<std::string>{"r.txt"});

    dir.write("plain", ""); // no directory for the new file
    for (std::string const &place : {dir.text("plain/s.txt"), dir.text("none/s.txt")}) {
        EXPECT_THROW(fitter::write_result(place, "new"), fitter::Error);
        EXPECT_THROW(fitter::check_writable(place), fitter::Error);
    }
}

// Nobody can guess the name under which a new file is written, and no file that a link names is written to.
TEST(FitterResult, IsWrittenInAPrivateDirectory)
{
    TempDir const dir;
    dir.write("r.txt.tmp/inside", "");
    fitter::write_result(dir.text("r.txt"), "new");
    EXPECT_EQ(dir.read("r.txt"), "new");

    fitter::NewFile file(dir.path() / "r.txt");
    fitter::NewFile const other(dir.path() / "r.txt");
    EXPECT_NE(file.directory(), other.directory());
    EXPECT_EQ(std::filesystem::path(file.path()).filename(), "r.txt");
    std::filesystem::perms const directory = std::filesystem::status(file.directory()).permissions();
    EXPECT_TRUE(ON_WINDOWS || directory == std::filesystem::perms::owner_all);
    std::ofstream(file.path()) << "newer";
    EXPECT_EQ(dir.read("r.txt"), "new");
    std::filesystem::perms const perms = std::filesystem::status(dir.path() / "r.txt").permissions();
    file.move_into_place();
    EXPECT_EQ(dir.read("r.txt"), "newer");
    EXPECT_EQ(std::filesystem::status(dir.path() / "r.txt").permissions(), perms) << "as any new file";
}

TEST(FitterText, ReplacesControlCharacters)
{
    EXPECT_EQ(fitter::printable("a\x1b[2J\x7f\n"), "a?[2J??");
    EXPECT_EQ(fitter::printable("\x9b-\xe4-\xff\x9b"), "?-\xe4-\xff?");
    EXPECT_EQ(fitter::printable("\xc2\x9b-\xc2\xa0"), "\xc2?-\xc2\xa0");
    for (char const *text : {"\xc3\x9b", "\xe2\x82\xac", "\xf0\x9f\x98\x80", "\xe2\x99\x9b~ "})
        EXPECT_EQ(fitter::printable(text), text);
    EXPECT_EQ(fitter::line("title", "a\tb"), "title         a?b\n");
}

TEST(FitterResult, CountsNetsByTheirLength)
{
    fitter::Fit fit = make_fit(make_design(20));
    fit.routing.trees.clear();
    for (std::size_t const length : {1u, 4u, 5u, 28u, 29u, 32u, 33u, 500u})
        fit.routing.trees.emplace_back(length);
    EXPECT_THAT(fitter::summary(fit), HasSubstr("net lengths   1-4: 2, 5-8: 1, 9-12: 0, 13-16: 0, 17-20: 0, 21-24: 0, "
                                                "25-28: 1, 29 and more: 4\n"));
}

// --- The tool as a process.

struct ReportRow
{
    std::vector<double> values;
    std::string path;
};

std::vector<ReportRow> rows_of_report(std::string const &text)
{
    std::vector<ReportRow> rows;
    std::istringstream lines(text);
    std::string line;
    std::getline(lines, line); // the titles
    while (std::getline(lines, line) && line.find('\t') != std::string::npos) {
        std::istringstream cells(line);
        ReportRow row;
        row.values.resize(8);
        for (double &value : row.values)
            cells >> value;
        cells >> std::ws;
        std::getline(cells, row.path);
        if (!row.path.empty() && row.path.back() == '\r')
            row.path.pop_back();
        rows.push_back(row);
    }
    return rows;
}

TEST(FitterTool, FitsADesignAndAccountsForIt)
{
    TempDir const dir;
    dir.write("small.blif", make_design(300));
    dir.write("kalvern.ini", "gen_print_profile_bins = on\n");
    ToolRun const run = run_fitter(dir, "--seed 5 --out results small.blif");
    ASSERT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_THAT(run.out, StartsWith("machine       " + fitter::machine_facts()));
    EXPECT_THAT(run.out, HasSubstr("\nnetlist       small.blif"));
    EXPECT_THAT(run.out, HasSubstr("\nsources       small.blif (project)"));
    EXPECT_THAT(run.out, HasSubstr("Starting Fitter Step 1 Netlist Reader at "));
    EXPECT_THAT(run.out, HasSubstr("  Ending Fitter Step 7 Report Writer at "));
    EXPECT_THAT(run.out, HasSubstr("\ntime          "));
    EXPECT_THAT(run.out, HasSubstr(" wallclock, "));
    EXPECT_THAT(run.out, HasSubstr("legal         yes"));
    std::string const result = dir.read("results/small.fit.txt");
    EXPECT_THAT(result, StartsWith("design        made: 300 LUTs, 100 flip-flops, 0 macros, 9 inputs, 8 outputs"));
    EXPECT_THAT(result, HasSubstr("\nplacement ("));
    EXPECT_THAT(result, HasSubstr("\nrouting ("));

    std::vector<std::string> paths;
    std::map<std::string, std::vector<double>> values;
    for (ReportRow const &row : rows_of_report(dir.read("profile_bins_Fitter.log"))) {
        paths.push_back(row.path);
        values[row.path] = row.values;
    }
    EXPECT_THAT(
        paths,
        ElementsAre("Fitter", "Fitter::fit2_fit_plan", "Fitter::fit2_fit_plan::gen_get_source_files",
                    "Fitter::fit2_fit_plan::Netlist Reader", "Fitter::fit2_fit_plan::Fingerprint",
                    "Fitter::fit2_fit_plan::OTHER", "Fitter::fit2_fit_early_place_init",
                    "Fitter::fit2_fit_early_place_init::Fingerprint", "Fitter::fit2_fit_early_place_init::OTHER",
                    "Fitter::LSC Clustering", "Fitter::LSC Clustering::Cluster Growth",
                    "Fitter::LSC Clustering::Cluster Merging", "Fitter::LSC Clustering::Fingerprint",
                    "Fitter::LSC Clustering::OTHER", "Fitter::Placer", "Fitter::Placer::Initial Placement",
                    "Fitter::Placer::Cluster Annealing", "Fitter::Placer::Cluster Annealing::Start Temperature",
                    "Fitter::Placer::Cluster Annealing::Perform Temperature",
                    "Fitter::Placer::Cluster Annealing::OTHER", "Fitter::Placer::Placement Congestion Analysis",
                    "Fitter::Placer::Fingerprint", "Fitter::Placer::OTHER", "Fitter::Router",
                    "Fitter::Router::fit2_fit_route_init", "Fitter::Router::Router Main Loop Before First Convergence",
                    "Fitter::Router::Router Main Loop Before First Convergence::Core Routing",
                    "Fitter::Router::Router Main Loop Before First Convergence::Congestion Update",
                    "Fitter::Router::Router Main Loop Before First Convergence::OTHER",
                    "Fitter::Router::Router Main Loop After First Convergence",
                    "Fitter::Router::Router Main Loop After First Convergence::Core Routing",
                    "Fitter::Router::Router Main Loop After First Convergence::OTHER", "Fitter::Router::Routing Check",
                    "Fitter::Router::Fingerprint", "Fitter::Router::OTHER", "Fitter::TDC Timing Analysis",
                    "Fitter::TDC Timing Analysis::fit2_fit_retime_init", "Fitter::TDC Timing Analysis::Fingerprint",
                    "Fitter::TDC Timing Analysis::OTHER", "Fitter::Report Writer",
                    "Fitter::Report Writer::fit2_fit_finalize_init", "Fitter::Report Writer::Fingerprint",
                    "Fitter::Report Writer::OTHER", "Fitter::OTHER"));
    std::vector<double> const &temperatures = values["Fitter::Placer::Cluster Annealing::Perform Temperature"];
    EXPECT_THAT(result, HasSubstr(" " + std::to_string(static_cast<int>(temperatures[0])) + " temperatures"));
    // The library estimates that this stage runs on 2.85 processors.
    EXPECT_GT(temperatures[1], 0.0);
    EXPECT_NEAR(temperatures[4], temperatures[1] / 2.85, 0.011);
    EXPECT_GE(values["Fitter"][1], temperatures[1]);
}

// Hash and path of each row of the cookie database.
std::vector<std::pair<std::string, std::string>> cookies_of(std::string const &text)
{
    std::vector<std::pair<std::string, std::string>> cookies;
    std::istringstream lines(text.substr(std::min(text.find("\n---"), text.size())));
    std::string line;
    while (std::getline(lines, line)) {
        std::size_t const hash = line.find('|') + 1;
        std::size_t const path = line.rfind('|') + 1;
        if (hash == path)
            continue;
        cookies.emplace_back(line.substr(hash, line.find(' ', hash) - hash),
                             line.substr(path, line.find_last_not_of('\r') + 1 - path));
    }
    return cookies;
}

std::set<std::string> files_in(TempDir const &dir, std::string const &below)
{
    return entry_names(dir.path() / below);
}

TEST(FitterTool, GivesTheSameForTheSameSeedAndWritesEveryLog)
{
    TempDir const dir;
    dir.write("small.blif", make_design(100));
    // The other logs are requested once: measuring what profiling itself costs takes seconds on slow clocks.
    std::string const cookies_on = "gen_print_cookie_log = on\n";
    std::string const all_on = cookies_on + "gen_print_profile_bins = on\nmem_tracking = 10\n"
                                            "gen_enable_mem_fileline_profiling = on\n"
                                            "gen_mem_fileline_profile_bin = fit2_fit_finalize_init\n";
    for (auto const &[arguments, keys] :
         {std::pair{"--seed 9 --out a small.blif", cookies_on}, std::pair{"--seed 9 --out b small.blif", cookies_on},
          std::pair{"--seed 10 --out c small.blif", all_on}}) {
        dir.write("kalvern.ini", keys);
        ASSERT_EQ(run_fitter(dir, arguments).status, 0) << arguments;
    }
    for (char const *file : {"/small.fit.txt", "/undo_redo.txt"}) {
        EXPECT_NE(dir.read(std::string("a") + file), "") << file;
        EXPECT_EQ(dir.read(std::string("a") + file), dir.read(std::string("b") + file));
        EXPECT_NE(dir.read(std::string("a") + file), dir.read(std::string("c") + file));
    }

    // One cookie for each stage of each run. From the placer on the hashes depend on the seed.
    auto const cookies = cookies_of(dir.read("cookie_db_Fitter.log"));
    char const *const stages[] = {"fit2_fit_plan", "fit2_fit_early_place_init", "LSC Clustering", "Placer",
                                  "Router",        "TDC Timing Analysis",       "Report Writer"};
    ASSERT_EQ(cookies.size(), 3 * std::size(stages)) << dir.read("cookie_db_Fitter.log");
    for (std::size_t i = 0; i < std::size(stages); ++i) {
        auto const &[hash, path] = cookies[i];
        EXPECT_EQ(path, std::string("Fitter::") + stages[i] + "::Fingerprint");
        EXPECT_EQ(cookies[std::size(stages) + i].first, hash) << path;
        EXPECT_EQ(cookies[2 * std::size(stages) + i].first == hash, i < 3) << path;
    }

    std::set<std::string> files{"a",
                                "b",
                                "c",
                                "err.txt",
                                "kalvern.ini",
                                "out.txt",
                                "small.blif",
                                "cookie_db_Fitter.log",
                                "profile_bins_Fitter.log",
                                "profile_bins_tagged_Fitter.log"};
    for (std::string const log :
         {"mem_tbb_fileline", "mem_tbb_subsystem", "mem_tbb_timeline", "mem_tbb_timeline_detailed"})
        files.insert(log + "_fit2_fit_finalize_init_1.log");
    for (std::string const stage : {"prefit", "early_place", "cluster", "placer", "router", "retimer", "postfit"}) {
        for (std::string const log : {"mem_tbb_pbin_stats.", "mem_tbb_pbin_tag_stats."})
            files.insert(log + stage + ".log");
        // The sources are no longer tracked after the selected bin, which lies in the last stage.
        if (stage != "postfit")
            for (std::string const log : {"mem_tbb_fileline.", "mem_tbb_subsystem."})
                files.insert(log + stage + ".log");
    }
    EXPECT_EQ(files_in(dir, "."), files);
    EXPECT_THAT(dir.read("mem_tbb_pbin_stats.placer.log"), HasSubstr("Perform Temperature"));
    EXPECT_THAT(dir.read("mem_tbb_pbin_tag_stats.placer.log"), HasSubstr("wires"));

    std::vector<std::string> tagged;
    for (ReportRow const &row : rows_of_report(dir.read("profile_bins_tagged_Fitter.log")))
        tagged.push_back(row.path);
    EXPECT_THAT(tagged, testing::IsSupersetOf({"Fitter::netlist", "Fitter::netlist::fit2_fit_plan",
                                               "Fitter::netlist::LSC Clustering", "Fitter::wires::Placer",
                                               "Fitter::wires::Router", "Fitter::timing::TDC Timing Analysis",
                                               "Fitter::Report Writer"}));
}

TEST(FitterTool, FindsItsFilesAndWritesIntoTheProject)
{
    TempDir const dir;
    dir.write("p/lib/small.blif", make_design(20) + ".search boxes.blif\n");
    dir.write("p/lib/boxes.blif", box("unused"));
    dir.write("p/small.v", "");
    ToolRun const run = run_fitter(dir, "--project p --library lib small.blif");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("\nnetlist       lib/small.blif"));
    EXPECT_THAT(run.out, HasSubstr("\nsources       "));
    EXPECT_THAT(dir.read("p/small.fit.txt"), HasSubstr("legal         yes"));
    EXPECT_EQ(files_in(dir, "p"), (std::set<std::string>{"lib", "small.fit.txt", "small.v", "undo_redo.txt"}));
    EXPECT_EQ(files_in(dir, "."), (std::set<std::string>{"err.txt", "out.txt", "p"})); // no log was requested
}

TEST(FitterTool, EndsWithStatusOneAndReportsTheReason)
{
    TempDir const dir;
    dir.write("good.blif", make_design(100));
    dir.write("bad.blif", ".model t\n.inputs a\n.gate x\n");
    dir.write("plain", "");
    dir.write("taken.blif", make_design(20));
    dir.write("taken.fit.txt/inside", "");
    struct Case
    {
        char const *arguments;
        char const *message;
    };
    for (Case const &c : {
             Case{"none.blif", "fitter: cannot find \"none.blif\" in the project, its libraries or the installation"},
             Case{"bad.blif", "fitter: bad.blif:3: cannot read \".gate\""},
             Case{"--out plain good.blif", "fitter: cannot make the output directory \"plain\""},
             Case{"--out plain/under good.blif", "fitter: cannot make the output directory \"plain/under\""},
             Case{"--project plain good.blif", "fitter: the project directory \"plain\" is no directory"},
             Case{"taken.blif", "fitter: cannot write "},
             Case{"--channel-width 1 good.blif", "fitter: not routable with channel width 1"},
             Case{"--speed 1 good.blif", "fitter: unknown option \"--speed\", see fitter --help"},
         }) {
        ToolRun const run = run_fitter(dir, c.arguments);
        EXPECT_EQ(run.status, 1) << c.arguments;
        EXPECT_THAT(run.err, StartsWith(c.message)) << c.arguments;
    }
    EXPECT_THAT(dir.read("good.fit.txt"), HasSubstr("legal         no, "));
}

TEST(FitterTool, SendsNoControlCharactersToTheTerminal)
{
    TempDir const dir;
    dir.write("small.blif", ".model \x1b[2Jt\n.inputs a\x9b\n.outputs y\xc3\xa4\n.names a\x9b y\xc3\xa4\n1 1\n");
    ToolRun const run = run_fitter(dir, "small.blif");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("\ndesign        ?[2Jt: 1 LUTs"));
    EXPECT_THAT(run.out, HasSubstr("from input a? to output y\xc3\xa4"));
    EXPECT_THAT(dir.read("small.fit.txt"), HasSubstr("input a\x9b\n")) << "names in the rows stay as they are";

    EXPECT_THAT(run_fitter(dir, "\"no\x1b[2Jne.blif\"").err, HasSubstr("no?[2Jne"));
}

TEST(FitterTool, IsNotStoppedByABrokenConfigurationOrReport)
{
    TempDir const dir;
    dir.write("small.blif", make_design(20));
    dir.write("kalvern.ini", std::string("= = =\n[[[\n\xff\xfe\0gen_print_profile_bins = maybe\n", 44) +
                                 "gen_print_profile_bins = on\n");
    ToolRun const broken = run_fitter(dir, "small.blif");
    EXPECT_EQ(broken.status, 0) << broken.err;
    EXPECT_THAT(dir.read("small.fit.txt"), HasSubstr("legal         yes"));

    std::filesystem::remove(dir.path() / "profile_bins_Fitter.log");
    dir.write("profile_bins_Fitter.log/inside", ""); // the report can't be written
    dir.write("kalvern.ini", "gen_print_profile_bins = on\n");
    ToolRun const unwritable = run_fitter(dir, "--seed 2 small.blif");
    EXPECT_EQ(unwritable.status, 0) << unwritable.err;
}

TEST(FitterTool, PrintsItsUsage)
{
    TempDir const dir;
    ToolRun const help = run_fitter(dir, "--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, StartsWith("usage: fitter "));
    ToolRun const version = run_fitter(dir, "--version");
    EXPECT_EQ(version.status, 0);
    EXPECT_THAT(version.out, StartsWith("fitter "));
}

} // namespace
