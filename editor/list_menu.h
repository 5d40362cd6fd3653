// Full-screen menus of lists, and line editing of strings, on the terminal.
#ifndef VELK_EDITOR_LIST_MENU_H
#define VELK_EDITOR_LIST_MENU_H

struct List;
struct String;

// Shows title and items (numbered from 1) centred on a cleared screen with
// item `def` in reverse video (item 1 when def is outside 1 ... count), lets
// the keys move the highlight and returns the item accepted with Enter.
// Keys: Ctrl-N, space, j, n and Down move down; Ctrl-P, k, p and Up move up
// (both wrap); a digit goes to that item, plus ten for each "+" typed just
// before it. While the menu is up, an interrupt, termination, quit or hang-up
// clears the screen and ends the program with status 1. Without items it
// returns 0 at once.
int TermMenu(const char *title, const char *const *items, int count, int def);

// A list of strings as a menu: element 1 the title, elements 2 ... n the
// items. Reports "Contents of menu must be string" and "Invalid default item
// number" (def outside 1 ... n - 1).
int ListMenu(List *l, int def);

// Edits s's text on a line of standard error after "name = " (or "String = "),
// at most 4095 characters; Enter stores the edited text.
String *vkStringEdit(String *s);

#endif
