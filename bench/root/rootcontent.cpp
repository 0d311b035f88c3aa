#include "rootcontent.h"

#include "failure.h"
#include "privateroot.h"

#include <cstdio>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bench {

namespace {

// The register pages of the USB PHY end here; the file that stands for the
// physical memory is sparse, so its length costs nothing.
constexpr off_t kMemoryBytes = 0x9C006000;

void makeFolders(const std::string &path)
{
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (error) {
        errno = error.value();
        fail("make the folder", path);
    }
}

void makeFile(const std::string &path, const char *text)
{
    makeFolders(path.substr(0, path.rfind('/')));
    std::FILE *file = std::fopen(path.c_str(), "w");
    if (file == nullptr || std::fputs(text, file) == EOF || std::fclose(file) != 0)
        fail("write", path);
}

void makeMemory(const std::string &path)
{
    struct stat known = {};
    if (::stat(path.c_str(), &known) == 0 && S_ISCHR(known.st_mode))
        return; // the machine's own, shown because it was asked for
    const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (file < 0 || ::ftruncate(file, kMemoryBytes) != 0 || ::close(file) != 0)
        fail("make", path);
}

void copyHome(const std::string &home)
{
    std::error_code error;
    if (!std::filesystem::exists(home, error))
        return;
    std::filesystem::copy(home, kUnitFolder, std::filesystem::copy_options::recursive, error);
    if (error) {
        errno = error.value();
        fail("copy", home);
    }
}

} // namespace

void makeRootContent(const std::string &home)
{
    makeMemory("/dev/mem");
    for (int controller = 1; controller <= 3; ++controller)
        makeFile("/sys/devices/platform/ehci-platform." + std::to_string(controller)
                     + "/usb_speed_switch",
                 "1\n");
    makeFile("/sys/module/usbcore/parameters/usb_logo_test_start", "0\n");
    for (const char *folder : {"/media/flash/nvm", "/media/update", "/media/usb0", "/media/usb1"})
        makeFolders(folder);
    copyHome(home);
}

} // namespace bench
