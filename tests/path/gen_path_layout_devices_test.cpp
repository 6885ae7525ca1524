// The device files in the directory of the module, in an installation on disk.
#include "gen_path_sys.h"

#include "tests/support/search_world.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using GenDeviceFiles = SearchTest;

} // namespace

TEST_F(GenDeviceFiles, AreThoseNextToTheModule)
{
    EXPECT_THAT(gen_get_all_device_files(), IsEmpty());
    for (char const *const name : {"b.ddb", "a b.ddb", "c.ddb.bak", "ddb", "B.ddbx", ".ddb", "10.ddb", "9.ddb"})
        world().put(std::string("suite/bin64/") + name);
    world().put("suite/common/other.ddb");
    std::filesystem::create_directories(world().dir().path() / "suite" / "bin64" / "directory.ddb");
    EXPECT_THAT(gen_get_all_device_files(), ElementsAre(".ddb", "10.ddb", "9.ddb", "a b.ddb", "b.ddb"));
    for (char const *const name : {"b.ddb", "a b.ddb", ".ddb", "10.ddb", "9.ddb"})
        world().remove(std::string("suite/bin64/") + name);
    EXPECT_THAT(gen_get_all_device_files(), IsEmpty());
}
