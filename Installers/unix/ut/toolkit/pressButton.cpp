#include "ut/toolkit/pressButton.h"

#include <Xm/XmP.h>
#include <Xm/AtomMgr.h>
#include <Xm/GadgetP.h>

#include "ut/toolkit/widgetTree.h"

static bool isGadget(Widget button)
{
    return XtIsSubclass(button, xmGadgetClass);
}

/* Handles the event by which a button is pressed from outside a dispatch. */
static void pressNow(Widget widget, XtPointer button, XEvent *pEvent, Boolean *)
{
    XtRemoveEventHandler(widget, NoEventMask, True, pressNow, button);
    OV_instPressButton(static_cast<Widget>(button), pEvent);
}

bool OV_instCanPress(Widget button)
{
    return button && !OV_instIsDying(button) && XtIsManaged(button) && XtIsSensitive(button);
}

void OV_instPressButton(Widget button, XEvent *pEvent)
{
    Cardinal iNone = 0;

    if (isGadget(button)) /* gadgets have no actions of their own, only this method */
        reinterpret_cast<XmGadgetClass>(XtClass(button))
            ->gadget_class.arm_and_activate(button, pEvent, nullptr, &iNone);
    else
        XtCallActionProc(button, "ArmAndActivate", pEvent, nullptr, 0);
}

static void pressNamed(Widget widget, XEvent *pEvent, String *apNames, Cardinal *piNames)
{
    Widget button = *piNames == 1 ? OV_instFindWidget(widget, apNames[0]) : nullptr;

    if (OV_instCanPress(button))
        OV_instPressButton(button, pEvent);
}

void OV_instAddPressAction(XtAppContext app)
{
    static char s_caName[] = "OvPress";
    XtActionsRec aActions[] = {
        {s_caName, pressNamed}
    };

    XtAppAddActions(app, aActions, XtNumber(aActions));
}

bool OV_instActivateButton(Widget button)
{
    static char s_caMessage[] = "OVINST_PRESS";
    Widget widget = button && isGadget(button) ? XtParent(button) : button;
    XEvent event = {};

    if (!OV_instCanPress(button) || !XtIsRealized(widget))
        return false;
    event.xclient.type = ClientMessage;
    event.xclient.display = XtDisplayOfObject(widget);
    event.xclient.window = XtWindowOfObject(widget);
    event.xclient.message_type = XmInternAtom(XtDisplayOfObject(widget), s_caMessage, False);
    event.xclient.format = 32;
    XtAddEventHandler(widget, NoEventMask, True, pressNow, button);
    return XtDispatchEvent(&event);
}
