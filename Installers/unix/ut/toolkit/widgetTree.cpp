#include "ut/toolkit/widgetTree.h"

#include <X11/IntrinsicP.h>
#include <X11/CoreP.h>
#include <X11/Shell.h>
#include <cstring>
#include <string>

Widget OV_instGetShell(Widget widget)
{
    while (widget && !XtIsShell(widget))
        widget = XtParent(widget);
    return widget;
}

Widget OV_instGetTLShell(Widget widget)
{
    while (widget && !XtIsTopLevelShell(widget))
        widget = XtParent(widget);
    return widget;
}

Widget OV_instGetTopManager(Widget widget)
{
    while (widget && !XtIsShell(widget) && XtParent(widget) && !XtIsShell(XtParent(widget)))
        widget = XtParent(widget);
    return widget;
}

Widget OV_instFindWidget(Widget inDialog, const char *pName)
{
    Widget top = OV_instGetTopManager(inDialog);

    if (!top || !pName)
        return nullptr;
    if (!XtIsShell(top) && !strcmp(XtName(top), pName))
        return top;
    return XtNameToWidget(top, (std::string("*") + pName).c_str());
}

bool OV_instIsDying(Widget widget)
{
    return widget && widget->core.being_destroyed;
}

int OV_instGetDimension(Widget widget, const char *pResource)
{
    Dimension size = 0;

    if (widget)
        XtVaGetValues(widget, pResource, &size, nullptr);
    return size;
}
