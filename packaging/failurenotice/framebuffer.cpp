#include "packaging/failurenotice/framebuffer.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <linux/kd.h>
#include <sstream>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

FramebufferOptions::FramebufferOptions(const char *pPanelOptions)
{
    std::string text = pPanelOptions ? pPanelOptions : "";
    for (char &character : text) {
        if (character == ':') {
            character = ' ';
        }
    }
    constexpr std::string_view Device = "fb=";
    constexpr std::string_view Rotation = "rotation=";
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (word.starts_with(Device)) {
            sDevice = word.substr(Device.size());
        } else if (word.starts_with(Rotation)) {
            nQuarterTurns = std::atoi(word.c_str() + Rotation.size()) / 90 & 3;
        }
    }
}

Framebuffer::Framebuffer(const FramebufferOptions &options) : nQuarterTurns(options.nQuarterTurns)
{
    const int nFd = open(options.sDevice.c_str(), O_RDWR | O_CLOEXEC);
    if (nFd < 0) {
        return;
    }
    const bool bKnown = ioctl(nFd, FBIOGET_VSCREENINFO, &screen) == 0
        && ioctl(nFd, FBIOGET_FSCREENINFO, &memory) == 0 && memory.type == FB_TYPE_PACKED_PIXELS
        && (memory.visual == FB_VISUAL_TRUECOLOR || memory.visual == FB_VISUAL_DIRECTCOLOR)
        && screen.bits_per_pixel >= 8 && screen.bits_per_pixel <= 32
        && std::size_t(screen.yres + screen.yoffset) * memory.line_length <= memory.smem_len;
    if (bKnown) {
        ioctl(nFd, FBIOBLANK, FB_BLANK_UNBLANK);
        void *pMapped = mmap(nullptr, memory.smem_len, PROT_READ | PROT_WRITE, MAP_SHARED, nFd, 0);
        pPixels = pMapped == MAP_FAILED ? nullptr : static_cast<std::uint8_t *>(pMapped);
    }
    close(nFd);
}

Framebuffer::~Framebuffer()
{
    if (nConsole >= 0) {
        ioctl(nConsole, KDSETMODE, KD_TEXT);
        close(nConsole);
    }
    if (pPixels) {
        munmap(pPixels, memory.smem_len);
    }
}

int Framebuffer::width() const
{
    return static_cast<int>(nQuarterTurns % 2 ? screen.yres : screen.xres);
}

int Framebuffer::height() const
{
    return static_cast<int>(nQuarterTurns % 2 ? screen.xres : screen.yres);
}

void Framebuffer::takeConsole()
{
    nConsole = open("/dev/tty0", O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (nConsole >= 0) {
        ioctl(nConsole, KDSETMODE, KD_GRAPHICS);
    }
}

std::uint32_t Framebuffer::pixelFor(std::uint32_t nColour) const
{
    const auto part = [](std::uint32_t nByte, const fb_bitfield &field) {
        const std::uint32_t nBits = nByte & 0xff;
        return (field.length < 8 ? nBits >> (8 - field.length) : nBits << (field.length - 8))
            << field.offset;
    };
    return part(nColour >> 16, screen.red) | part(nColour >> 8, screen.green)
        | part(nColour, screen.blue) | part(0xff, screen.transp);
}

void Framebuffer::setPixel(int nX, int nY, std::uint32_t nPixel)
{
    const int nRight = static_cast<int>(screen.xres) - 1;
    const int nBottom = static_cast<int>(screen.yres) - 1;
    int nColumn = nX;
    int nRow = nY;
    switch (nQuarterTurns) {
    case 1:
        nColumn = nRight - nY;
        nRow = nX;
        break;
    case 2:
        nColumn = nRight - nX;
        nRow = nBottom - nY;
        break;
    case 3:
        nColumn = nY;
        nRow = nBottom - nX;
        break;
    }
    const std::size_t nBytes = (screen.bits_per_pixel + 7) / 8;
    std::memcpy(pPixels + (std::size_t(nRow) + screen.yoffset) * memory.line_length
                    + (std::size_t(nColumn) + screen.xoffset) * nBytes,
                &nPixel, nBytes);
}

void Framebuffer::fill(const Box &box, std::uint32_t nColour)
{
    const std::uint32_t nPixel = pixelFor(nColour);
    for (int nY = box.nY; nY < box.nY + box.nHeight; ++nY) {
        for (int nX = box.nX; nX < box.nX + box.nWidth; ++nX) {
            setPixel(nX, nY, nPixel);
        }
    }
}
