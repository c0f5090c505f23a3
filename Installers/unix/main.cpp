#include <clocale>

#include "dialogs/start.h"
#include "engine/startup.h"

int main(int argc, char **argv)
{
    char *pDescription = nullptr;
    char *pDestination = nullptr;

    /* Texts are in the user's characters; numbers keep their point in every locale. */
    (void)setlocale(LC_CTYPE, "");
    OV_instPrepareEnvironment();
    OV_instProcessArgs(argc, argv, &pDescription, &pDestination); /* returns for the dialogs only */
    return OV_instStartDialogs(argc, argv, pDescription, pDestination);
}
