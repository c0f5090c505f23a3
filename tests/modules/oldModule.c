/* Built for another version of setup. */
double ModuleVersion = 1.0;

int initModule(void)
{
    return 0;
}
