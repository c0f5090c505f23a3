/* Expansion of one-character "%" escapes by a table. */
#ifndef OVINST_UT_OVINSTEXPAND_H
#define OVINST_UT_OVINSTEXPAND_H

/* A table is an array of these, ended by a row whose value is null. */
struct _OV_InstExpansion {
    char key;
    const char *value;
};

/* pText with every "%k" replaced by the value of key k. An unknown escape, "%%" included, and a
 * "%" at the very end vanish. A new string for the caller to free; null for a null argument. */
char *OV_instExpandString(const char *pText, const _OV_InstExpansion *aTable);

#endif
