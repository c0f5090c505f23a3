#include "ut/toolkit/looks.h"

#include <X11/IntrinsicP.h>
#include <X11/CoreP.h>
#include <X11/StringDefs.h>
#include <cctype>
#include <cstdio>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "ut/toolkit/bxutils.h"

enum { BASE_DPI = 96, LEAST_DPI = 72, MOST_DPI = 384, MAX_DEPTH = 64 };
enum { BASE_POINTS = 10, BASE_WIDTH = 800, BASE_HEIGHT = 600 }; /* what dialogs are laid out for */

/* The resources whose values are lengths. In plain pixels they would shrink to nothing on a screen
 * of fine dots, where the fonts keep their size. */
static const char *const s_apLengths[] = {
    "bottomOffset",
    "defaultButtonShadowThickness",
    "detailShadowThickness",
    "height",
    "highlightThickness",
    "horizontalSpacing",
    "indicatorSize",
    "leftOffset",
    "listMarginHeight",
    "listMarginWidth",
    "marginBottom",
    "marginHeight",
    "marginLeft",
    "marginRight",
    "marginTop",
    "marginWidth",
    "rightOffset",
    "scrolledWindowMarginHeight",
    "scrolledWindowMarginWidth",
    "shadowThickness",
    "spacing",
    "topOffset",
    "verticalSpacing",
    "width",
};

/* Where a resource is, from the application downwards; both lists end with a null. */
struct Place {
    std::vector<XrmQuark> names;
    std::vector<XrmQuark> classes;
};

static struct {
    Display *pDisplay; /* the one that the rest is about */
    XrmDatabase user;  /* what its resources held at the start; null for nothing */
    int iDpi;          /* of lengths: as the screen has, or more for a larger font */
} s_looks;

/* The class that resources of this name have nearly everywhere. */
static XrmQuark classOfResource(const std::string &resource)
{
    std::string name(resource);

    if (!name.empty())
        name[0] = static_cast<char>(toupper(static_cast<unsigned char>(name[0])));
    return XrmStringToQuark(name.c_str());
}

static Place placeOfApplication(Display *pDisplay)
{
    String pName = nullptr;
    String pClass = nullptr;

    XtGetApplicationNameAndClass(pDisplay, &pName, &pClass);
    return {{XrmStringToQuark(pName)}, {XrmStringToQuark(pClass)}};
}

static void goDown(Place *pPlace, XrmQuark name, XrmQuark nameClass)
{
    pPlace->names.push_back(name);
    pPlace->classes.push_back(nameClass);
}

static Place placeOfWidget(Widget widget)
{
    Widget parent = XtParent(widget);

    if (!parent)
        return placeOfApplication(XtDisplay(widget));
    Place place = placeOfWidget(parent);
    goDown(&place, XrmStringToQuark(XtName(widget)),
           XrmStringToQuark(XtClass(widget)->core_class.class_name));
    return place;
}

/* Copies one entry of a database; the form is the enumeration's. */
static Bool copyEntry(XrmDatabase *, XrmBindingList aBindings, XrmQuarkList aQuarks,
                      XrmRepresentation *pType, XrmValue *pValue, XPointer copy)
{
    XrmQPutResource(reinterpret_cast<XrmDatabase *>(copy), aBindings, aQuarks, *pType, pValue);
    return False;
}

static int readDpi(Display *pDisplay)
{
    const char *pSet = XGetDefault(pDisplay, "Xft", "dpi"); /* the fonts look there as well */
    int iScreen = DefaultScreen(pDisplay);
    double dpi = pSet ? atof(pSet) : 0;

    if (dpi <= 0 && DisplayHeightMM(pDisplay, iScreen) > 0)
        dpi = DisplayHeight(pDisplay, iScreen) * 25.4 / DisplayHeightMM(pDisplay, iScreen);
    if (dpi < LEAST_DPI) /* or unknown */
        return BASE_DPI;
    return dpi > MOST_DPI ? MOST_DPI : static_cast<int>(lround(dpi));
}

static void startFor(Display *pDisplay)
{
    if (s_looks.pDisplay != pDisplay)
        OV_instStartLooks(pDisplay);
}

/* What the user has set at a place, or null. */
static const char *userValue(Place *pPlace, const char *pResource)
{
    XrmRepresentation type;
    XrmValue value;

    while (*pResource) { /* "renderTable.fontSize" is two steps down */
        const std::string part(pResource, strcspn(pResource, "."));
        goDown(pPlace, XrmStringToQuark(part.c_str()), classOfResource(part));
        pResource += part.size() + (pResource[part.size()] == '.');
    }
    goDown(pPlace, NULLQUARK, NULLQUARK);
    if (!s_looks.user ||
        !XrmQGetResource(s_looks.user, pPlace->names.data(), pPlace->classes.data(), &type, &value))
        return nullptr;
    return static_cast<const char *>(value.addr);
}

/* What lengths are scaled by. They grow with a larger font of the user's as well, but not beyond
 * what the screen has room for: a button off the screen is worse than a narrow margin. */
static int dpiOfLengths(Display *pDisplay)
{
    Place place = placeOfApplication(pDisplay);
    const char *pPoints = userValue(&place, "renderTable.fontSize");
    const int iPoints = pPoints ? atoi(pPoints) : 0;
    const int iScreen = DefaultScreen(pDisplay);
    int iDpi = readDpi(pDisplay);

    if (iPoints > BASE_POINTS)
        iDpi = iDpi * iPoints / BASE_POINTS;
    for (int iRoom : {DisplayWidth(pDisplay, iScreen) * BASE_DPI / BASE_WIDTH,
                      DisplayHeight(pDisplay, iScreen) * BASE_DPI / BASE_HEIGHT})
        iDpi = iRoom < iDpi ? iRoom : iDpi;
    return iDpi < LEAST_DPI ? LEAST_DPI : iDpi;
}

/* The value as this display wants it: lengths are scaled, all else stays. */
static std::string valueFor(Display *pDisplay, const char *pResource, const char *pValue)
{
    char *pEnd = nullptr;
    long lLength = strtol(pValue, &pEnd, 10);

    if (pEnd == pValue || *pEnd)
        return pValue;
    for (const char *pLength : s_apLengths) {
        if (!strcmp(pLength, pResource))
            return std::to_string(OV_instScaleLength(pDisplay, static_cast<int>(lLength)));
    }
    return pValue;
}

static void merge(Display *pDisplay, const char *pSpecifier, const char *pResource,
                  const char *pValue)
{
    XrmDatabase added = nullptr;

    XrmPutStringResource(&added, pSpecifier, valueFor(pDisplay, pResource, pValue).c_str());
    OV_instMergeResources(pDisplay, added);
}

/* "*" and the names of the widget and all above it but the application's shell, each followed by
 * "*": precise enough not to reach a dialog that is opened from this one. */
static std::string pathOf(Widget widget)
{
    return XtParent(widget) ? pathOf(XtParent(widget)) + XtName(widget) + "*" : "*";
}

void OV_instStartLooks(Display *pDisplay)
{
    Place place = placeOfApplication(pDisplay);
    XrmDatabase all = XtDatabase(pDisplay);

    if (s_looks.user)
        XrmDestroyDatabase(s_looks.user);
    s_looks = {pDisplay, nullptr, BASE_DPI};
    goDown(&place, NULLQUARK, NULLQUARK);
    if (all) /* what begins with another application's name is left out */
        (void)XrmEnumerateDatabase(all, place.names.data(), place.classes.data(), XrmEnumAllLevels,
                                   copyEntry, reinterpret_cast<XPointer>(&s_looks.user));
    s_looks.iDpi = dpiOfLengths(pDisplay);
}

/* Stops the enumeration at an entry whose resource the names given as closure hold. */
static Bool isNamed(XrmDatabase *, XrmBindingList, XrmQuarkList aQuarks, XrmRepresentation *,
                    XrmValue *, XPointer names)
{
    const char *pLast = "";

    for (; *aQuarks != NULLQUARK; aQuarks++)
        pLast = XrmQuarkToString(*aQuarks);
    for (const char *const *ppName = reinterpret_cast<const char *const *>(names); *ppName;
         ppName++) {
        if (!strcmp(*ppName, pLast) || classOfResource(*ppName) == XrmStringToQuark(pLast))
            return True;
    }
    return False;
}

bool OV_instUserNames(Display *pDisplay, const char *const *apResources)
{
    XrmQuark none = NULLQUARK;

    startFor(pDisplay);
    /* the enumeration takes no constants */
    const auto closure = reinterpret_cast<XPointer>(const_cast<const char **>(apResources));
    return s_looks.user &&
           XrmEnumerateDatabase(s_looks.user, &none, &none, XrmEnumAllLevels, isNamed, closure);
}

void OV_instAddLook(Display *pDisplay, const char *pSpecifier, const char *pValue)
{
    XrmBinding aBindings[MAX_DEPTH];
    XrmQuark aQuarks[MAX_DEPTH];
    Place place = placeOfApplication(pDisplay);
    XrmQuark *pQuark = aQuarks;

    startFor(pDisplay);
    if (strlen(pSpecifier) >= MAX_DEPTH) /* so many components at most */
        return;
    XrmStringToBindingQuarkList(pSpecifier, aBindings, aQuarks);
    for (; pQuark[0] != NULLQUARK && pQuark[1] != NULLQUARK; pQuark++)
        goDown(&place, *pQuark, *pQuark);
    if (*pQuark != NULLQUARK && !userValue(&place, XrmQuarkToString(*pQuark)))
        merge(pDisplay, pSpecifier, XrmQuarkToString(*pQuark), pValue);
}

void OV_instAddLooks(Display *pDisplay, const OV_LookRow *aRows)
{
    for (const OV_LookRow *pRow = aRows; pRow->pSpecifier; pRow++)
        OV_instAddLook(pDisplay, pRow->pSpecifier, pRow->pValue);
}

int OV_instAddWidgetLooks(Widget parent, const char *pName, WidgetClass kind, const char *pLines)
{
    const std::string path = pathOf(parent) + pName + ".";
    Place place = placeOfWidget(parent);

    startFor(XtDisplay(parent));
    goDown(&place, XrmStringToQuark(pName), XrmStringToQuark(kind->core_class.class_name));
    while (*pLines) {
        const std::string line(pLines, strcspn(pLines, "\n"));
        const size_t iColon = line.find(':');
        pLines += line.size() + (pLines[line.size()] == '\n');
        if (iColon == std::string::npos)
            return -1;
        const std::string resource = line.substr(0, iColon);
        const size_t iValue = line.find_first_not_of(" \t", iColon + 1);
        Place asked = place;
        if (!userValue(&asked, resource.c_str()))
            merge(XtDisplay(parent), (path + resource).c_str(), resource.c_str(),
                  iValue == std::string::npos ? "" : line.c_str() + iValue);
    }
    return 0;
}

int OV_instScaleLength(Display *pDisplay, int iLength)
{
    startFor(pDisplay);
    return (iLength * s_looks.iDpi + BASE_DPI / 2) / BASE_DPI;
}
