#include "ut/toolkit/appResources.h"

#include <X11/Shell.h>
#include <Xm/RepType.h>
#include <Xm/Xm.h>
#include <algorithm>
#include <vector>

#include "ut/toolkit/Scheme.h"
#include "ut/toolkit/appFonts.h"
#include "ut/toolkit/appLooks.h"
#include "ut/toolkit/bxutils.h"
#include "ut/toolkit/looks.h"
#include "ut/toolkit/pressButton.h"
#include "ut/toolkit/rowList.h"

static const char s_caClass[] = "ORVANE Setup";

Widget OV_instOpenApplicationAs(int argc, char **argv)
{
    int iCount = argc;
    char **apArgv = OV_instNewArgv(&iCount, argv);
    std::vector<char *> words(apArgv, apArgv + iCount); /* the toolkit drops those that it knows */
    int iLeft = iCount;
    Widget shell = OV_instOpenApplication(&iLeft, apArgv);

    std::copy(words.begin(), words.end(), apArgv);
    OV_instFreeArgv(iCount, apArgv);
    return shell;
}

Widget OV_instOpenApplication(int *piArgc, char **apArgv)
{
    String pName = nullptr;
    String pClass = nullptr;

    XtToolkitInitialize();
    XtAppContext app = XtCreateApplicationContext();
    Display *pDisplay = XtOpenDisplay(app, nullptr, nullptr, s_caClass, nullptr, 0, piArgc, apArgv);
    if (!pDisplay) {
        XtDestroyApplicationContext(app);
        return nullptr;
    }
    (void)XSetLocaleModifiers(""); /* input methods; without one, keys still give characters */
    XtGetApplicationNameAndClass(pDisplay, &pName, &pClass);
    OV_instStartLooks(pDisplay);
    OV_instAddAppLooks(pDisplay);
    Widget shell =
        XtAppCreateShell(pName, pClass, applicationShellWidgetClass, pDisplay, nullptr, 0);
    OV_instAddFonts(shell);
    RegisterBxConverters(app);
    OV_instAddPressAction(app);
    OV_instAddListAction(app);
    XmRepTypeInstallTearOffModelConverter();
    return shell;
}
