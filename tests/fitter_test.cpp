// The sample fitter: its reader, packer, placer and router on small designs, and the tool as a process.
#include "error.h"
#include "gen_path_sys.h"
#include "options.h"
#include "random.h"
#include "report.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>
#include <sstream>

namespace {

using fitter::CellKind;
using fitter::Index;
using fitter::NONE;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

// Layers of LUTs with registers behind each third of them; the same text for the same seed.
std::string make_design(unsigned luts, std::uint64_t seed = 7)
{
    fitter::Random random(seed);
    std::vector<std::string> names;
    std::string text = ".model made\n.inputs clk";
    for (int i = 0; i < 8; ++i) {
        names.push_back("i" + std::to_string(i));
        text += " " + names.back();
    }
    text += "\n.outputs";
    for (unsigned i = luts - 8; i < luts; ++i)
        text += " n" + std::to_string(i);
    text += "\n";
    for (unsigned i = 0; i < luts; ++i) {
        std::string const name = "n" + std::to_string(i);
        text += ".names";
        // Mostly near neighbours, as in a real design.
        for (int input = 0; input < 3; ++input) {
            auto const count = static_cast<std::uint32_t>(names.size());
            text += " " + names[count - 1 - random.below(std::min(count, 40u))];
        }
        text += " " + name + "\n110 1\n";
        names.push_back(name);
        if (i % 3 == 0) {
            text += ".latch " + name + " q" + std::to_string(i) + " re clk 0\n";
            names.push_back("q" + std::to_string(i));
        }
    }
    return text + ".end\n";
}

fitter::Netlist read(std::string const &text)
{
    return fitter::read_blif(text, "t.blif");
}

std::string error_of(std::string const &text)
{
    try {
        read(text);
    } catch (fitter::Error const &error) {
        return error.what();
    }
    return "no error";
}

// --- The reader.

TEST(FitterNetlist, ReadsCellsAndNets)
{
    fitter::Netlist const netlist = read(".model top\n.inputs a b clk\n.outputs q y\n"
                                         ".names a b y\n11 1\n"
                                         ".latch y q re clk 2\n"
                                         ".end\n");
    EXPECT_EQ(netlist.name, "top");
    EXPECT_EQ(netlist.count(CellKind::INPUT_PAD), 3u);
    EXPECT_EQ(netlist.count(CellKind::OUTPUT_PAD), 2u);
    EXPECT_EQ(netlist.count(CellKind::LUT), 1u);
    EXPECT_EQ(netlist.count(CellKind::FLOP), 1u);
    ASSERT_EQ(netlist.nets.size(), 5u);
    for (fitter::Net const &net : netlist.nets) {
        ASSERT_NE(net.driver, NONE) << net.name;
        EXPECT_EQ(net.sinks.size(), net.name == "clk" ? 0u : net.name == "y" ? 2u : 1u) << net.name;
        EXPECT_EQ(net.clocked.size(), net.name == "clk" ? 1u : 0u) << net.name;
    }
}

// All mean the same: an AND of a and b.
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
        fitter::Netlist netlist;
        ASSERT_NO_THROW(netlist = read(text)) << text << "\n" << error_of(text);
        EXPECT_EQ(netlist.name, "t") << text;
        EXPECT_EQ(netlist.cells.size(), 4u) << text;
        EXPECT_EQ(netlist.nets.size(), 3u) << text;
        EXPECT_EQ(netlist.count(CellKind::LUT), 1u) << text;
    }
}

TEST(FitterNetlist, TakesBlackBoxesAsCells)
{
    fitter::Netlist const netlist = read(".model t\n.inputs a\n.outputs y\n"
                                         ".subckt ram d=a q=y\n.subckt ram d=y\n"
                                         ".end\n.model ram\n.inputs d\n.outputs q\n.blackbox\n.end\n");
    EXPECT_EQ(netlist.count(CellKind::MACRO), 2u);
    EXPECT_EQ(netlist.nets.size(), 2u);
}

TEST(FitterNetlist, ReadsALineOfAMillionNames)
{
    std::string text = ".model t\n.outputs y\n.names y\n.inputs";
    for (int i = 0; i < 1000000; ++i)
        text += " i" + std::to_string(i);
    EXPECT_EQ(read(text).count(CellKind::INPUT_PAD), 1000000u);
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
    {".model t\n.end\n\n.model t\n.end\n", "t.blif:4: model \"t\" already stands at line 1"},
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
TEST(FitterNetlist, TellsFileAndLineOfAFault)
{
    for (ErrorCase const &c : ERROR_CASES)
        EXPECT_EQ(error_of(c.text), c.message) << c.text;
}

TEST(FitterNetlist, ShortensALongNameInAMessage)
{
    EXPECT_EQ(error_of(std::string(100, 'x')), "t.blif:1: expected .model, found \"" + std::string(60, 'x') + "...\"");
}

// Whatever the file holds, the answer is a netlist with a driver for each net or an Error.
TEST(FitterNetlist, SurvivesGarbage)
{
    std::string const good = make_design(40);
    fitter::Random random(3);
    int faults = 0;
    for (int round = 0; round < 2000; ++round) {
        std::string text = good;
        for (std::uint32_t i = 0; i <= random.below(4); ++i) {
            std::size_t const at = random.below(static_cast<std::uint32_t>(text.size()));
            if (random.below(3) == 0)
                text.erase(at, random.below(30));
            else
                text[at] = static_cast<char>(random.below(256));
        }
        try {
            fitter::Netlist const netlist = read(text);
            for (fitter::Net const &net : netlist.nets)
                EXPECT_NE(net.driver, NONE) << text;
        } catch (fitter::Error const &error) {
            EXPECT_THAT(error.what(), StartsWith("t.blif")) << text;
            ++faults;
        }
    }
    EXPECT_GT(faults, 1000);
    EXPECT_LT(faults, 2000);
}

TEST(FitterNetlist, TellsAFileThatCannotBeRead)
{
    TempDir const dir;
    for (std::string const &path : {dir.text("none.blif"), dir.text("no/such/place.blif"), dir.text()})
        EXPECT_THROW(fitter::read_file(path), fitter::Error) << path;
    EXPECT_EQ(fitter::read_file(dir.write("some.blif", std::string("a\r\n\0b", 5))), std::string("a\r\n\0b", 5));
}

// --- The packer.

TEST(FitterPack, PutsEachCellIntoOneLegalBlock)
{
    for (unsigned const luts : {8u, 50u, 300u}) {
        fitter::Netlist const netlist = read(make_design(luts));
        fitter::Packing const packing = fitter::pack(netlist);
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
        EXPECT_EQ(times.size(), netlist.cells.size());
        for (auto const &[cell, count] : times)
            EXPECT_EQ(count, 1) << netlist.cells[cell].name;
    }
}

TEST(FitterPack, PairsALutWithTheFlopThatAloneReadsIt)
{
    fitter::Packing const paired = fitter::pack(read(".model t\n.inputs a c\n.outputs q\n.names a n\n1 1\n"
                                                     ".latch n q re c 0\n"));
    ASSERT_EQ(paired.elements.size(), 1u);
    EXPECT_NE(paired.elements[0].lut, NONE);
    EXPECT_NE(paired.elements[0].flop, NONE);
    fitter::Packing const apart = fitter::pack(read(".model t\n.inputs a c\n.outputs q n\n.names a n\n1 1\n"
                                                    ".latch n q re c 0\n"));
    EXPECT_EQ(apart.elements.size(), 2u);
}

TEST(FitterPack, KeepsClocksAndEdgesApart)
{
    fitter::Packing const packing =
        fitter::pack(read(".model t\n.inputs a c d\n.outputs p q r s\n.latch a p re c 0\n.latch a q fe c 0\n"
                          ".latch a r re d 0\n.latch a s re c 0\n"));
    EXPECT_EQ(packing.elements.size(), 4u);
    EXPECT_EQ(packing.clusters.size(), 3u);
}

TEST(FitterPack, LeavesClocksOutOfTheFabric)
{
    fitter::Netlist const netlist = read(make_design(60));
    for (fitter::FabricNet const &net : fitter::pack(netlist).nets) {
        EXPECT_NE(netlist.nets[net.net].name, "clk");
        EXPECT_GE(net.blocks.size(), 2u) << netlist.nets[net.net].name;
    }
}

// --- A whole fit.

fitter::Fit make_fit(std::string const &text, std::uint64_t seed = 1, Index channel_width = 16)
{
    fitter::Fit fit;
    fit.netlist = read(text);
    fit.packing = fitter::pack(fit.netlist);
    fit.device = fitter::Device::for_packing(fit.packing);
    fit.placement = fitter::place(fit.packing, fit.device, {seed, /*effort=*/2});
    fit.expected_use = fitter::analyse_congestion(fit.packing, fit.device, fit.placement.site_of_block);
    fit.routing = fitter::route(fit.packing, fit.device, fit.placement, {channel_width});
    fit.timing = fitter::analyse_timing(fit.netlist, fit.packing, fit.device, fit.placement, fit.routing);
    return fit;
}

std::string check(fitter::Fit const &fit)
{
    return fitter::check_routing(fit.packing, fit.device, fit.placement, fit.routing);
}

TEST(FitterPlace, GivesEachBlockASiteOfItsKind)
{
    for (std::uint64_t const seed : {0u, 1u, 2u, 3u}) {
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

// The numbers are those of the first run anywhere: every platform must find them.
TEST(FitterPlace, IsTheSameForTheSameSeedOnEveryPlatform)
{
    struct Golden
    {
        std::uint64_t seed, placed, routed;
    };
    for (Golden const &c : {Golden{1, 533, 619}, Golden{2, 551, 632}, Golden{18446744073709551615u, 547, 612}}) {
        fitter::Fit const fit = make_fit(make_design(200), c.seed);
        EXPECT_EQ(fit.placement.wire_length, c.placed) << "seed " << c.seed;
        EXPECT_EQ(fit.routing.wire_length, c.routed) << "seed " << c.seed;
        EXPECT_EQ(fitter::result_text(fit), fitter::result_text(make_fit(make_design(200), c.seed)));
    }
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
        device.segments_beside(device.cluster_site(1, 2)),
        ElementsAre(device.horizontal(1, 2), device.horizontal(1, 3), device.vertical(1, 2), device.vertical(2, 2)));
    EXPECT_THAT(device.segments_beside(device.pad_site(4, 0)), ElementsAre(device.vertical(3, 1)));
}

TEST(FitterDevice, HasALargestSize)
{
    std::string text = ".model t\n.inputs";
    for (int i = 0; i < 8000; ++i)
        text += " i" + std::to_string(i);
    EXPECT_EQ(fitter::Device::for_packing(fitter::pack(read(text))).size(), 500);
    try {
        fitter::Device::for_packing(fitter::pack(read(text + " one_more")));
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
        EXPECT_EQ(fit.routing.iterations > 1, width < 60) << "width " << width; // narrow ones must be negotiated
        EXPECT_LE(fit.routing.wire_length, fit.routing.converged_length) << "width " << width;
        for (std::size_t i = 0; i < fit.packing.nets.size(); ++i)
            EXPECT_FALSE(fit.routing.trees[i].empty()) << "width " << width << " net " << i;
    }
}

TEST(FitterRoute, SaysWhenTheChannelsAreTooNarrow)
{
    fitter::Fit const fit = make_fit(make_design(300), 1, 1);
    EXPECT_EQ(check(fit), "");
    EXPECT_FALSE(fit.routing.is_legal());
    EXPECT_GT(fit.routing.overused_segments, 0u);
    EXPECT_GT(fit.routing.peak_use, 1u);
    EXPECT_THAT(fitter::summary(fit), HasSubstr("legal         no, "));
}

TEST(FitterRoute, IsCheckedFromScratch)
{
    fitter::Fit const good = make_fit(make_design(100));
    fitter::Routing const &routing = good.routing;
    ASSERT_EQ(check(good), "");
    auto const longest = static_cast<std::size_t>(
        std::max_element(routing.trees.begin(), routing.trees.end(),
                         [](fitter::Tree const &a, fitter::Tree const &b) { return a.size() < b.size(); }) -
        routing.trees.begin());
    ASSERT_GE(routing.trees[longest].size(), 3u);

    fitter::Fit cut = good;
    cut.routing.trees[longest].pop_back();
    EXPECT_THAT(check(cut), HasSubstr("does not reach block")) << longest;
    fitter::Fit torn = good;
    torn.routing.trees[longest].erase(torn.routing.trees[longest].begin());
    EXPECT_NE(check(torn), "");
    fitter::Fit doubled = good;
    doubled.routing.trees[longest].push_back(doubled.routing.trees[longest].front());
    EXPECT_THAT(check(doubled), HasSubstr("twice"));
    fitter::Fit hidden = good;
    ++hidden.routing.use[0];
    EXPECT_EQ(check(hidden), "the use of the segments is not that of the trees");
    fitter::Fit narrow = good;
    narrow.routing.channel_width = 1;
    EXPECT_EQ(check(narrow), "the count of overused segments is wrong");
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

TEST(FitterTiming, TellsLutsOnLoops)
{
    fitter::Fit const fit = make_fit(".model t\n.inputs a\n.outputs y\n.names a n m\n11 1\n.names m n\n1 1\n"
                                     ".names n y\n1 1\n");
    EXPECT_EQ(fit.timing.untimed_luts, 3u);
    EXPECT_THAT(fitter::summary(fit), HasSubstr("3 LUTs on or behind combinational loops"));
}

// --- Options.

TEST(FitterOptions, ReadsThem)
{
    fitter::Options const options =
        fitter::parse_options({"--seed", "18446744073709551615", "--channel-width", "9", "--out", "o", "--project", "p",
                               "--effort", "fast", "--", "-x.blif"});
    EXPECT_EQ(options.seed, 18446744073709551615u);
    EXPECT_EQ(options.channel_width, 9u);
    EXPECT_EQ(options.output_directory, "o");
    EXPECT_EQ(options.project_directory, "p");
    EXPECT_LT(options.effort, fitter::Options().effort);
    EXPECT_EQ(options.design, "-x.blif");
}

struct OptionErrorCase
{
    std::vector<std::string> words;
    char const *message;
};
TEST(FitterOptions, RefusesWhatHasNoMeaning)
{
    for (OptionErrorCase const &c : std::vector<OptionErrorCase>{
             {{}, "no netlist given, see fitter --help"},
             {{""}, "the netlist's name is empty"},
             {{"a.blif", "b.blif"}, "more than one netlist: \"a.blif\" and \"b.blif\""},
             {{"--sed", "1", "a.blif"}, "unknown option \"--sed\", see fitter --help"},
             {{"a.blif", "--seed"}, "--seed needs a value"},
             {{"a.blif", "--out", ""}, "--out needs a directory"},
             {{"--seed", "-1"}, "--seed \"-1\", expected a number from 0 to 18446744073709551615"},
             {{"--seed", "1x"}, "--seed \"1x\", expected a number from 0 to 18446744073709551615"},
             {{"--seed", "18446744073709551616"},
              "--seed \"18446744073709551616\", expected a number from 0 to 18446744073709551615"},
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
        EXPECT_FALSE(std::filesystem::exists(dir.path() / "r.txt.tmp"));
    }
}

TEST(FitterResult, KeepsWhatIsThereIfItCannotBeReplaced)
{
    TempDir const dir;
    dir.write("r.txt/inside", "kept"); // a directory where the file should go
    EXPECT_THROW(fitter::write_result(dir.text("r.txt"), "new"), fitter::Error);
    EXPECT_EQ(dir.read("r.txt/inside"), "kept");
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "r.txt.tmp"));

    dir.write("s.txt", "old");
    dir.write("s.txt.tmp/inside", ""); // no room for the new file beside it
    EXPECT_THROW(fitter::write_result(dir.text("s.txt"), "new"), fitter::Error);
    EXPECT_THROW(fitter::check_writable(dir.text("s.txt")), fitter::Error);
    EXPECT_EQ(dir.read("s.txt"), "old");
}

// --- The tool as a process.

struct ToolRun
{
    int status = -1;
    std::string out;
    std::string err;
};

// Runs the tool that stands beside the library, in a directory, by the system's shell.
ToolRun run_fitter(TempDir const &dir, std::string const &arguments)
{
    CurrentDirectory const there(dir.path());
    std::filesystem::path const tool = std::filesystem::path(gen_get_module_path() + "fitter").make_preferred();
    std::string command = "\"" + tool.string() + "\" " + arguments + " >out.txt 2>err.txt";
    // The shell of Windows takes the outermost quotes off.
    if (std::filesystem::path::preferred_separator == '\\')
        command = "\"" + command + "\"";
    int const status = std::system(command.c_str());
    // Elsewhere the exit code stands in the second byte.
    return {status > 0xff ? status >> 8 : status, dir.read("out.txt"), dir.read("err.txt")};
}

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
    EXPECT_THAT(run.out, HasSubstr("Starting Fitter Step 1 Netlist Reader at "));
    EXPECT_THAT(run.out, HasSubstr("  Ending Fitter Step 6 Report Writer at "));
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
        paths, ElementsAre(
                   "Fitter", "Fitter::Netlist Reader", "Fitter::Packer", "Fitter::Packer::Element Pairing",
                   "Fitter::Packer::Clustering", "Fitter::Packer::Cluster Merging", "Fitter::Packer::OTHER",
                   "Fitter::Placer", "Fitter::Placer::Initial Placement", "Fitter::Placer::Cluster Annealing",
                   "Fitter::Placer::Cluster Annealing::Start Temperature",
                   "Fitter::Placer::Cluster Annealing::Perform Temperature", "Fitter::Placer::Cluster Annealing::OTHER",
                   "Fitter::Placer::Placement Congestion Analysis", "Fitter::Placer::OTHER", "Fitter::Router",
                   "Fitter::Router::Router Main Loop Before First Convergence",
                   "Fitter::Router::Router Main Loop Before First Convergence::Core Routing",
                   "Fitter::Router::Router Main Loop Before First Convergence::Congestion Update",
                   "Fitter::Router::Router Main Loop Before First Convergence::OTHER",
                   "Fitter::Router::Router Main Loop After First Convergence",
                   "Fitter::Router::Router Main Loop After First Convergence::Core Routing",
                   "Fitter::Router::Router Main Loop After First Convergence::OTHER", "Fitter::Router::Routing Check",
                   "Fitter::Router::OTHER", "Fitter::TDC Timing Analysis", "Fitter::Report Writer", "Fitter::OTHER"));
    std::vector<double> const &temperatures = values["Fitter::Placer::Cluster Annealing::Perform Temperature"];
    EXPECT_THAT(result, HasSubstr(" " + std::to_string(static_cast<int>(temperatures[0])) + " temperatures"));
    // This stage is known to run on 2.85 processors.
    EXPECT_GT(temperatures[1], 0.0);
    EXPECT_NEAR(temperatures[4], temperatures[1] / 2.85, 0.011);
    EXPECT_GE(values["Fitter"][1], temperatures[1]);
}

TEST(FitterTool, GivesTheSameFileForTheSameSeed)
{
    TempDir const dir;
    dir.write("small.blif", make_design(100));
    for (char const *arguments :
         {"--seed 9 --out a small.blif", "--seed 9 --out b small.blif", "--seed 10 --out c small.blif"})
        ASSERT_EQ(run_fitter(dir, arguments).status, 0) << arguments;
    EXPECT_NE(dir.read("a/small.fit.txt"), "");
    EXPECT_EQ(dir.read("a/small.fit.txt"), dir.read("b/small.fit.txt"));
    EXPECT_NE(dir.read("a/small.fit.txt"), dir.read("c/small.fit.txt"));
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "profile_bins_Fitter.log")); // not asked for
}

TEST(FitterTool, WritesIntoTheProjectByDefault)
{
    TempDir const dir;
    dir.write("p/small.blif", make_design(20));
    ASSERT_EQ(run_fitter(dir, "--project p p/small.blif").status, 0);
    EXPECT_THAT(dir.read("p/small.fit.txt"), HasSubstr("legal         yes"));
}

TEST(FitterTool, EndsWithStatusOneAndSaysWhy)
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
             Case{"none.blif", "fitter: cannot open \"none.blif\""},
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

TEST(FitterTool, TellsHowItIsUsed)
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
