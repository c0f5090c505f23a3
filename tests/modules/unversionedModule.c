/* Does not say which version of setup it was built for. */
int initModule(void)
{
    return 0;
}
