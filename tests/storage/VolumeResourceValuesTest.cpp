#include "storage/VolumeResourceValues.h"

#include <gtest/gtest.h>

using namespace corvel;

TEST(VolumeResourceValues, HiddenVolumesAreDroppedExceptTheRoot) {
    VolumeResourceValues values;
    values.isBrowsable = false;
    EXPECT_EQ(VolumeResourceValues::makeRecord("/System/Volumes/VM", values), std::nullopt);
    values.isRootFileSystem = true;
    EXPECT_TRUE(VolumeResourceValues::makeRecord("/System/Volumes/VM", values));
    values.isRootFileSystem.reset();
    // Unreported root flag: the path decides.
    auto root = VolumeResourceValues::makeRecord("/", values);
    ASSERT_TRUE(root);
    EXPECT_TRUE(root->isRootFileSystem);
    values.isRootFileSystem = false;
    EXPECT_EQ(VolumeResourceValues::makeRecord("/", values), std::nullopt);  // the reported value wins
    values.isBrowsable.reset();
    EXPECT_TRUE(VolumeResourceValues::makeRecord("/Volumes/X", values));  // unknown counts as browsable
}

TEST(VolumeResourceValues, NamePrefersTheLocalizedName) {
    VolumeResourceValues values;
    values.volumeName = "Untitled";
    values.localizedName = "Sans titre";
    EXPECT_EQ(VolumeResourceValues::makeRecord("/Volumes/Untitled", values)->name, "Sans titre");
    values.localizedName.reset();
    EXPECT_EQ(VolumeResourceValues::makeRecord("/Volumes/Untitled", values)->name, "Untitled");
    values.volumeName.reset();
    EXPECT_EQ(VolumeResourceValues::makeRecord("/Volumes/Backup 2", values)->name, "Backup 2");
    EXPECT_EQ(VolumeResourceValues::makeRecord("/", values)->name, "/");
}

TEST(VolumeResourceValues, ValuesPassThroughAsReported) {
    VolumeResourceValues values;
    values.totalCapacity = 1000;
    values.availableCapacity = 100;
    values.availableCapacityForImportantUsage = 300;
    values.isInternal = false;
    values.isEjectable = true;
    values.isLocal = false;
    values.isReadOnly = true;
    values.typeName = "smbfs";
    values.supportsCaseSensitiveNames = false;
    // The record's name falls back to the path's last component; nothing is invented.
    EXPECT_EQ(VolumeResourceValues::makeRecord("/Volumes/media", values),
              (MountedVolumeRecord{"/Volumes/media", "media", 1000, 100, 300, false, true, std::nullopt, false, true,
                                   false, "smbfs", std::nullopt, false}));

    // Unknown locality is treated as local.
    MountedVolumeRecord odd;
    odd.path = "/Volumes/Odd";
    odd.name = "Odd";
    EXPECT_EQ(VolumeResourceValues::makeRecord("/Volumes/Odd", VolumeResourceValues{}), odd);
}
