/* Right version, but neither initialisation nor functions. */
double ModuleVersion = 1.1;
