#include "platform/DeviceFile.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/PlatformRoot.h"

int DeviceFile::openReadOnly(const std::string& p_strPath) {
    const std::string strPath = PlatformRoot::resolve(p_strPath);
    int nFd;
    do {
        nFd = ::open(strPath.c_str(), O_RDONLY | O_CLOEXEC);
    } while (nFd < 0 && errno == EINTR);
    return nFd;
}

int DeviceFile::ioctl(int p_nFd, unsigned long p_ulRequest, void* p_pArg) {
    int nRet;
    do {
        nRet = ::ioctl(p_nFd, p_ulRequest, p_pArg);
    } while (nRet < 0 && errno == EINTR);
    return nRet;
}

void DeviceFile::close(int p_nFd) {
    if (p_nFd >= 0) {
        ::close(p_nFd);
    }
}
