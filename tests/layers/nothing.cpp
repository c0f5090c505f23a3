/* A program that does nothing: what is linked with it is the test. */
int main()
{
    return 0;
}
