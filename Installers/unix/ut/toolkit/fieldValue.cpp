#include "ut/toolkit/fieldValue.h"

#include <Xm/TextF.h>
#include <Xm/Xm.h>

#include "ut/text.h"
#include "ut/toolkit/widgetTree.h"

/* The value that a field was given, and what the field made of it. It is the field's user data. */
struct Given {
    std::string value;
    std::string shown;
};

static std::string textOf(Widget field)
{
    char *pText = field ? XmTextFieldGetString(field) : nullptr;
    std::string text(pText ? pText : "");

    XtFree(pText);
    return text;
}

static void forget(Widget, XtPointer given, XtPointer)
{
    delete static_cast<Given *>(given);
}

static Given *givenTo(Widget field)
{
    Given *pGiven = nullptr;

    if (field)
        XtVaGetValues(field, XmNuserData, &pGiven, nullptr);
    return pGiven;
}

void OV_instSetFieldValue(Widget field, const std::string &value)
{
    Given *pGiven = givenTo(field);

    if (!field)
        return;
    if (!pGiven) {
        pGiven = new Given;
        XtVaSetValues(field, XmNuserData, pGiven, nullptr);
        XtAddCallback(field, XmNdestroyCallback, forget, pGiven);
    }
    XmTextFieldSetString(field, OV_instDisplayable(value).data());
    *pGiven = {value, textOf(field)};
}

bool OV_instIsFieldChanged(Widget field)
{
    const Given *pGiven = givenTo(field);

    return textOf(field) != (pGiven ? pGiven->shown : "");
}

std::string OV_instFieldValue(Widget field)
{
    const Given *pGiven = givenTo(field);

    return pGiven && !OV_instIsFieldChanged(field) ? pGiven->value : textOf(field);
}

std::string OV_instFieldText(Widget dialog, const char *pName)
{
    return textOf(OV_instFindWidget(dialog, pName));
}
