#include "ut/toolkit/picture.h"

#include <X11/Xutil.h>
#include <X11/xpm.h>
#include <Xm/Xm.h>
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "ut/toolkit/looks.h"

struct DestroysImage {
    void operator()(XImage *pImage) const { XDestroyImage(pImage); }
};
using OwnedImage = std::unique_ptr<XImage, DestroysImage>;

enum { MOST_SIDE = 32767 }; /* of a pixmap */

static OwnedImage readPicture(Widget widget, char **apLines)
{
    char caNone[] = "none";
    XpmColorSymbol background = {nullptr, caNone, 0};
    XpmAttributes attributes = {};
    Widget parent = XtParent(widget);
    XImage *pImage = nullptr;

    XtVaGetValues(widget, XmNbackground, &background.pixel, nullptr);
    XtVaGetValues(parent, XmNdepth, &attributes.depth, XmNcolormap, &attributes.colormap, nullptr);
    attributes.colorsymbols = &background;
    attributes.numsymbols = 1;
    attributes.valuemask = XpmColorSymbols | XpmDepth | XpmColormap;
    if (XpmCreateImageFromData(XtDisplay(parent), apLines, &pImage, nullptr, &attributes) < 0)
        return nullptr;
    XpmFreeAttributes(&attributes);
    return OwnedImage(pImage);
}

/* The picture in the size of lengths, each dot the nearest of the given one's; null without memory.
 */
static OwnedImage scaled(Display *pDisplay, XImage *pGiven)
{
    const int iWidth = std::max(OV_instScaleLength(pDisplay, pGiven->width), 1);
    const int iHeight = std::max(OV_instScaleLength(pDisplay, pGiven->height), 1);

    if (iWidth > MOST_SIDE || iHeight > MOST_SIDE)
        return nullptr;
    OwnedImage image(XCreateImage(pDisplay, DefaultVisual(pDisplay, DefaultScreen(pDisplay)),
                                  static_cast<unsigned>(pGiven->depth), ZPixmap, 0, nullptr,
                                  static_cast<unsigned>(iWidth), static_cast<unsigned>(iHeight),
                                  pGiven->bitmap_pad, 0));
    if (!image)
        return nullptr;
    const auto iBytes = static_cast<size_t>(image->bytes_per_line) * static_cast<size_t>(iHeight);
    image->data = static_cast<char *>(malloc(iBytes));
    if (!image->data)
        return nullptr;
    for (int iY = 0; iY < iHeight; iY++)
        for (int iX = 0; iX < iWidth; iX++)
            (void)XPutPixel(
                image.get(), iX, iY,
                XGetPixel(pGiven, iX * pGiven->width / iWidth, iY * pGiven->height / iHeight));
    return image;
}

static Pixmap pixmapOf(Widget widget, XImage *pImage)
{
    Display *pDisplay = XtDisplay(widget);
    const auto width = static_cast<unsigned>(pImage->width);
    const auto height = static_cast<unsigned>(pImage->height);
    const Pixmap pixmap = XCreatePixmap(pDisplay, RootWindowOfScreen(XtScreen(widget)), width,
                                        height, static_cast<unsigned>(pImage->depth));
    GC context = XCreateGC(pDisplay, pixmap, 0, nullptr);

    XPutImage(pDisplay, pixmap, context, pImage, 0, 0, 0, 0, width, height);
    XFreeGC(pDisplay, context);
    return pixmap;
}

static void freePicture(Widget widget, XtPointer pixmap, XtPointer)
{
    XFreePixmap(XtDisplay(widget), static_cast<Pixmap>(reinterpret_cast<uintptr_t>(pixmap)));
}

void OV_instShowPicture(Widget widget, char **apLines)
{
    OwnedImage given = readPicture(widget, apLines);

    if (!given)
        return;
    OwnedImage shown = scaled(XtDisplay(widget), given.get());
    const Pixmap pixmap = pixmapOf(widget, shown ? shown.get() : given.get());
    XtVaSetValues(widget, XmNlabelType, XmPIXMAP, XmNlabelPixmap, pixmap, nullptr);
    XtAddCallback(widget, XmNdestroyCallback, freePicture,
                  reinterpret_cast<XtPointer>(static_cast<uintptr_t>(pixmap)));
}
