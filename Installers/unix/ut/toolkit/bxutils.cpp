#include "ut/toolkit/bxutils.h"

#include <Xm/RowColumn.h>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "ut/toolkit/compound.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/text.h"

/* Room for so many pointers, all null, to be freed with XtFree. */
static XtPointer newPointers(size_t iCount)
{
    return XtCalloc(static_cast<Cardinal>(iCount), sizeof(XtPointer));
}

static XmString newDirection(bool bRightToLeft)
{
    return XmStringDirectionCreate(bRightToLeft ? XmSTRING_DIRECTION_R_TO_L
                                                : XmSTRING_DIRECTION_L_TO_R);
}

/* Appends a text line by line, pText being changed on the way. Fonts have no glyph for a tab. */
static XmString appendLines(XmString made, char *pText, const char *pTag)
{
    for (char *pTab = pText; pTab && (pTab = strchr(pTab, '\t'));)
        *pTab = ' ';
    for (char *pLine = pText; pLine;) {
        char *pBreak = strchr(pLine, '\n');
        if (pBreak)
            *pBreak = '\0';
        if (*pLine)
            made = XmStringConcatAndFree(made, XmStringCreate(pLine, const_cast<char *>(pTag)));
        if (pBreak)
            made = XmStringConcatAndFree(made, XmStringSeparatorCreate());
        pLine = pBreak ? pBreak + 1 : nullptr;
    }
    return made;
}

static XmString appendSegment(XmString made, const OV_TextSegment *pSegment, bool *pbRightToLeft)
{
    char *pText = OV_instNarrowText(pSegment->pText);
    char *pTag = OV_instNarrowText(pSegment->pTag);

    if (pSegment->bRightToLeft != *pbRightToLeft) {
        *pbRightToLeft = pSegment->bRightToLeft;
        made = XmStringConcatAndFree(made, newDirection(*pbRightToLeft));
    }
    made = appendLines(made, pText, pTag);
    if (pSegment->bSeparator)
        made = XmStringConcatAndFree(made, XmStringSeparatorCreate());
    XtFree(pText);
    XtFree(pTag);
    return made;
}

static void warnOfArguments(Display *pDisplay, const Cardinal *piArgs, const char *pClass,
                            const char *pText)
{
    if (*piArgs > 0)
        XtAppWarningMsg(XtDisplayToApplicationContext(pDisplay), "wrongParameters",
                        "XtToolkitError", pClass, pText, nullptr, nullptr);
}

/* Whether the receiver's memory, if it brings any, can take a pointer. */
static Boolean hasRoom(XrmValue *pTo)
{
    if (!pTo->addr || pTo->size >= sizeof(XtPointer))
        return True;
    pTo->size = sizeof(XtPointer); /* how a converter asks for more */
    return False;
}

/* Hands a converted pointer over as converters do: into the receiver's memory or into static. */
static Boolean handOver(XrmValue *pTo, XtPointer converted)
{
    static XtPointer s_converted;

    if (!pTo->addr)
        pTo->addr = reinterpret_cast<XPointer>(&s_converted);
    memcpy(pTo->addr, &converted, sizeof converted);
    pTo->size = sizeof converted;
    return True;
}

/* Writes pText[0..iLength) as a compound string. */
static XmString convertItem(const char *pText, size_t iLength)
{
    OwnedText item(strndup(pText, iLength));

    return StringToXmString(item ? item.get() : "");
}

/* What stands between the brackets of a list of names, or the whole of it. */
static std::string insideBrackets(const char *pNames)
{
    std::string names(pNames);
    size_t iOpen = names.find('[');

    if (iOpen != std::string::npos)
        names.erase(0, iOpen + 1);
    if (iOpen != std::string::npos && names.rfind(']') != std::string::npos)
        names.erase(names.rfind(']'));
    return names;
}

static Widget findUpwards(Widget widget, const char *pName)
{
    Widget found = nullptr;

    for (; widget && !found; widget = XtParent(widget))
        found = XtNameToWidget(widget, pName);
    return found;
}

static XrmQuark quarkOf(const char *pName)
{
    return XrmStringToQuark(pName);
}

/* The value as a resource line has to spell it. */
static std::string spelled(const char *pValue)
{
    std::string line;

    if (*pValue == ' ' || *pValue == '\t')
        line = "\\"; /* leading blanks would be dropped */
    for (; *pValue; pValue++) {
        if (*pValue == '\n')
            line += "\\n";
        else if (*pValue == '\\')
            line += "\\\\";
        else
            line += *pValue;
    }
    return line;
}

static char *defaultLine(const char *pPath, const char *pName, const _UIAppDefault *pRow)
{
    const std::string value = spelled(pRow->pValue);

    if (pRow->pSubName && *pRow->pSubName)
        return OV_instStrPrint("%s.%s*%s.%s: %s", pPath, pRow->pInstance, pRow->pSubName,
                               pRow->pResource, value.c_str());
    if (pRow->pSubName)
        return OV_instStrPrint("%s.%s.%s: %s", pPath, pRow->pInstance, pRow->pResource,
                               value.c_str());
    if (*pRow->pInstance)
        return OV_instStrPrint("%s*%s*%s.%s: %s", pPath, pName, pRow->pInstance, pRow->pResource,
                               value.c_str());
    return OV_instStrPrint("%s*%s.%s: %s", pPath, pName, pRow->pResource, value.c_str());
}

void RegisterBxConverters(XtAppContext app)
{
    XtAppSetTypeConverter(app, XmRString, XmRXmString, CvtStringToXmString, nullptr, 0,
                          XtCacheAll | XtCacheRefCount, XmStringCvtDestroy);
    XtAppSetTypeConverter(app, XmRString, XmRXmStringTable, CvtStringToXmStringTable, nullptr, 0,
                          XtCacheAll | XtCacheRefCount, XmStringTableCvtDestroy);
}

XmString StringToXmString(const char *pText)
{
    bool bRightToLeft = false;
    OV_TextSegment segment;

    if (!OV_instIsCompoundText(pText))
        return OV_instLiteralXmString(pText);
    XmString made = newDirection(bRightToLeft);
    wchar_t *pWide = OV_instWidenText(pText);
    for (const wchar_t *pNext = pWide; extractSegment(&pNext, &segment);)
        made = appendSegment(made, &segment, &bRightToLeft);
    XtFree(reinterpret_cast<char *>(pWide));
    return made;
}

XmString OV_instLiteralXmString(const char *pText)
{
    char *pCopy = pText ? XtNewString(pText) : nullptr;
    XmString made = pCopy ? appendLines(newDirection(false), pCopy, "") : nullptr;

    XtFree(pCopy);
    return made;
}

Boolean CvtStringToXmString(Display *pDisplay, XrmValue *, Cardinal *piArgs, XrmValue *pFrom,
                            XrmValue *pTo, XtPointer *)
{
    warnOfArguments(pDisplay, piArgs, "cvtStringToXmString",
                    "String to XmString converter needs no extra arguments");
    if (!hasRoom(pTo))
        return False;
    XmString made = StringToXmString(pFrom->addr);
    return made ? handOver(pTo, made) : False;
}

void XmStringCvtDestroy(XtAppContext, XrmValue *pTo, XtPointer, XrmValue *, Cardinal *)
{
    XmStringFree(*reinterpret_cast<XmString *>(pTo->addr));
}

Boolean CvtStringToXmStringTable(Display *pDisplay, XrmValue *, Cardinal *piArgs, XrmValue *pFrom,
                                 XrmValue *pTo, XtPointer *)
{
    const char *pItem = pFrom->addr ? pFrom->addr : "";
    int iCount = getCStrCount(pItem);

    warnOfArguments(pDisplay, piArgs, "cvtStringToXmStringTable",
                    "String to XmStringTable converter needs no extra arguments");
    if (!hasRoom(pTo))
        return False;
    XmString *aTable = static_cast<XmString *>(newPointers(static_cast<size_t>(iCount) + 1));
    for (int i = 0; i < iCount; i++) {
        const char *pEnd = getNextCStrDelim(pItem);
        aTable[i] = convertItem(pItem, static_cast<size_t>(pEnd - pItem));
        pItem = pEnd + 1; /* behind the text's end only after the last item */
    }
    return handOver(pTo, aTable);
}

void XmStringTableCvtDestroy(XtAppContext, XrmValue *pTo, XtPointer, XrmValue *, Cardinal *)
{
    XmString *aTable = *reinterpret_cast<XmString **>(pTo->addr);

    for (int i = 0; aTable[i]; i++)
        XmStringFree(aTable[i]);
    XtFree(reinterpret_cast<char *>(aTable));
}

XtArgVal CONVERT(Widget widget, const char *pText, const char *pTypeName, int, Boolean *pOk)
{
    static const char *const s_apByAddress[] = {"String", "Double", "Float"};
    XrmValue from = {static_cast<unsigned int>(strlen(pText) + 1), const_cast<XPointer>(pText)};
    XrmValue to = {};

    *pOk = XtConvertAndStore(widget, XmRString, &from, pTypeName, &to);
    if (!*pOk || !to.addr)
        return 0;
    for (const char *pByAddress : s_apByAddress) {
        if (!strcmp(pTypeName, pByAddress))
            return reinterpret_cast<XtArgVal>(to.addr);
    }
    switch (to.size) {
    case 1:
        return *reinterpret_cast<signed char *>(to.addr);
    case 2:
        return *reinterpret_cast<short *>(to.addr);
    case 4:
        return *reinterpret_cast<int *>(to.addr);
    default:
        return *reinterpret_cast<XtArgVal *>(to.addr);
    }
}

void MENU_POST(Widget, XtPointer client, XEvent *pEvent, Boolean *)
{
    Widget menu = static_cast<Widget>(client);
    unsigned int iButton = 0;

    XtVaGetValues(menu, XmNwhichButton, &iButton, nullptr);
    if (pEvent->type != ButtonPress || pEvent->xbutton.button != iButton)
        return;
    XmMenuPosition(menu, &pEvent->xbutton);
    XtManageChild(menu);
}

void SET_BACKGROUND_COLOR(Widget, ArgList aArgs, Cardinal *piCount, Pixel pixel)
{
    XtSetArg(aArgs[*piCount], XmNbackground, pixel);
    ++*piCount;
}

Widget BxFindTopShell(Widget widget)
{
    while (widget && XtParent(widget))
        widget = XtParent(widget);
    return widget;
}

WidgetList BxWidgetIdsFromNames(Widget widget, const char *pCallerName, const char *pNames)
{
    const std::string names = OV_instTrimmed(insideBrackets(pNames)) + ",";
    WidgetList aFound = static_cast<WidgetList>(newPointers(names.size() + 1));
    int iCount = 0;

    for (size_t iStart = 0, iEnd = 0; iStart < names.size(); iStart = iEnd + 1) {
        iEnd = names.find(',', iStart);
        const std::string name = "*" + OV_instTrimmed(names.substr(iStart, iEnd - iStart));
        Widget found = name.size() > 1 ? findUpwards(widget, name.c_str()) : nullptr;
        if (found)
            aFound[iCount++] = found;
        else if (name.size() > 1)
            (void)printf("Callback Error (%s):\n\tCannot find widget %s\n", pCallerName,
                         name.c_str());
    }
    return aFound;
}

float *SINGLE(float value)
{
    float *pMade = reinterpret_cast<float *>(XtMalloc(sizeof value));

    *pMade = value;
    return pMade;
}

double *DOUBLE(double value)
{
    double *pMade = reinterpret_cast<double *>(XtMalloc(sizeof value));

    *pMade = value;
    return pMade;
}

int atoui(const char *pText, unsigned int iLength, unsigned int *piValue)
{
    unsigned int iValue = 0;

    for (unsigned int i = 0; i < iLength; i++) {
        if (!isdigit(static_cast<unsigned char>(pText[i])))
            return 0;
        iValue = iValue * 10 + static_cast<unsigned int>(pText[i] - '0');
    }
    *piValue = iValue;
    return 1;
}

void OV_instMergeResources(Display *pDisplay, XrmDatabase added)
{
    XrmDatabase resources = XtDatabase(pDisplay);

    if (!added)
        return;
    XrmCombineDatabase(added, &resources, False);
    if (!XtDatabase(pDisplay))
        XrmSetDatabase(pDisplay, resources);
}

void setDefaultResources(const char *pName, Widget widget, const char *const *apLines)
{
    XrmDatabase added = nullptr;

    for (; *apLines; apLines++) {
        OwnedText line(OV_instStrPrint("*%s%s", pName, *apLines));
        if (line)
            XrmPutLineResource(&added, line.get());
    }
    OV_instMergeResources(XtDisplayOfObject(widget), added);
}

void InitAppDefaults(Widget widget, _UIAppDefault *aTable)
{
    XrmDatabase resources = XtDatabase(XtDisplayOfObject(widget));

    if (!resources)
        return;
    for (_UIAppDefault *pRow = aTable; pRow->pInstance; pRow++) {
        XrmQuark aNames[5] = {quarkOf(pRow->pClass)};
        XrmRepresentation type;
        XrmValue value;
        int iCount = 1;

        aNames[iCount++] = quarkOf(*pRow->pInstance ? pRow->pInstance : pRow->pClass);
        if (pRow->pSubName && *pRow->pSubName)
            aNames[iCount++] = quarkOf(pRow->pSubName);
        aNames[iCount] = quarkOf(pRow->pResource);
        if (!XrmQGetResource(resources, aNames, aNames, &type, &value))
            continue;
        XtFree(pRow->pValue);
        pRow->pValue = XtNewString(value.addr);
    }
}

void SetAppDefaults(Widget widget, const _UIAppDefault *aTable, const char *pName)
{
    XrmDatabase added = nullptr;
    std::string path;

    if (!pName)
        return;
    for (Widget up = widget; up && !XtIsApplicationShell(up); up = XtParent(up))
        path = std::string("*") + XtName(up) + path;
    for (const _UIAppDefault *pRow = aTable; pRow->pInstance; pRow++) {
        OwnedText line(pRow->pValue ? defaultLine(path.c_str(), pName, pRow) : nullptr);
        if (line)
            XrmPutLineResource(&added, line.get());
    }
    OV_instMergeResources(XtDisplayOfObject(widget), added);
}
