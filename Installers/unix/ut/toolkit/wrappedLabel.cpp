#include "ut/toolkit/wrappedLabel.h"

#include <Xm/Xm.h>

#include <string>

#include "ut/toolkit/foldText.h"

/* What a label that wraps shows. It is the label's user data. */
struct Wrapped {
    std::string text;
    int iWidth;  /* the room that the lines were broken for, */
    int iHeight; /* and in which they stand at the top */
};

/* The label's size without its borders. */
static void getRoom(Widget label, int *piWidth, int *piHeight)
{
    Dimension width = 0;
    Dimension height = 0;
    Dimension marginWidth = 0;
    Dimension marginHeight = 0;
    Dimension border = 0;

    XtVaGetValues(label, XmNwidth, &width, XmNheight, &height, XmNmarginWidth, &marginWidth,
                  XmNmarginHeight, &marginHeight, XmNhighlightThickness, &border, nullptr);
    *piWidth = width - 2 * (marginWidth + border);
    *piHeight = height - 2 * (marginHeight + border);
}

/* A label centres its lines in the height it is given, but for the margin below them. */
static void moveToTop(Widget label, int iRoom)
{
    XmRenderTable table = nullptr;
    XmString shown = nullptr;

    XtVaGetValues(label, XmNrenderTable, &table, XmNlabelString, &shown, nullptr);
    const int iBelow = table && shown ? iRoom - XmStringHeight(table, shown) : 0;
    XtVaSetValues(label, XmNmarginBottom, static_cast<Dimension>(iBelow > 0 ? iBelow : 0), nullptr);
    XmStringFree(shown);
}

static void wrap(Widget label, Wrapped *pWrapped)
{
    OV_instSetFoldedLabel(label, pWrapped->text.c_str(), pWrapped->iWidth);
    moveToTop(label, pWrapped->iHeight);
}

/* Also when the label appears: it gets its first size before it has a window. */
static void resized(Widget label, XtPointer wrapped, XEvent *, Boolean *)
{
    auto *pWrapped = static_cast<Wrapped *>(wrapped);
    int iWidth = 0;
    int iHeight = 0;

    getRoom(label, &iWidth, &iHeight);
    if (iWidth == pWrapped->iWidth && iHeight == pWrapped->iHeight)
        return;
    pWrapped->iWidth = iWidth;
    pWrapped->iHeight = iHeight;
    wrap(label, pWrapped);
}

static void forget(Widget, XtPointer wrapped, XtPointer)
{
    delete static_cast<Wrapped *>(wrapped);
}

void OV_instSetWrappedLabel(Widget label, const char *pText)
{
    Wrapped *pWrapped = nullptr;

    if (!label || !pText)
        return;
    XtVaGetValues(label, XmNuserData, &pWrapped, nullptr);
    if (!pWrapped) {
        pWrapped = new Wrapped;
        XtVaSetValues(label, XmNuserData, pWrapped, nullptr);
        XtAddEventHandler(label, StructureNotifyMask, False, resized, pWrapped);
        XtAddCallback(label, XmNdestroyCallback, forget, pWrapped);
    }
    pWrapped->text = pText;
    getRoom(label, &pWrapped->iWidth, &pWrapped->iHeight);
    wrap(label, pWrapped);
}
