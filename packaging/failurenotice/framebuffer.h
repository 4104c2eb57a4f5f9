#pragma once

#include "packaging/failurenotice/notice.h"

#include <cstddef>
#include <cstdint>
#include <linux/fb.h>

/// Reads the options of a platform argument for linuxfb, such as "linuxfb:fb=/dev/fb1:rotation=90".
struct FramebufferOptions
{
    explicit FramebufferOptions(const char *pPanelOptions);

    std::string sDevice = "/dev/fb0";
    int nQuarterTurns = 0;
};

/// The screen, as the kernel's framebuffer: no library and no font is in between, because one of
/// them may be what keeps the panel from running.
class Framebuffer
{
public:
    explicit Framebuffer(const FramebufferOptions &options);
    /// Gives the console back to the kernel.
    ~Framebuffer();
    Framebuffer(const Framebuffer &) = delete;
    Framebuffer &operator=(const Framebuffer &) = delete;

    /// Whether there is a screen whose pixels have red, green and blue parts.
    bool isUsable() const { return pPixels != nullptr; }
    /// Size as the operator sees it, turned.
    int width() const;
    int height() const;

    /// Keeps the kernel's console from writing over what is painted.
    void takeConsole();
    /// \a nColour: 0xRRGGBB.
    void fill(const Box &box, std::uint32_t nColour);

private:
    std::uint32_t pixelFor(std::uint32_t nColour) const;
    void setPixel(int nX, int nY, std::uint32_t nPixel);

    int nQuarterTurns;
    int nConsole = -1;
    fb_var_screeninfo screen{};
    fb_fix_screeninfo memory{};
    std::uint8_t *pPixels = nullptr;
};
