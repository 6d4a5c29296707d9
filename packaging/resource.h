#pragma once

/* Numbers of the program's resources. Plain defines: the resource compiler reads this file as well. */

#define IDI_PROGRAM 1 /* the lowest number: what the file manager shows for the program */

/* The tree's pictures: a category, and the selected category. */
#define IDI_CATEGORY_CLOSED 2
#define IDI_CATEGORY_OPEN 3

/* The list's picture of an item. */
#define IDI_ITEM 4

/* The toolbar's eight pictures, consecutive, in the order of its buttons. */
#define IDI_TOOLBAR_ADD 5
#define IDI_TOOLBAR_RENAME 6
#define IDI_TOOLBAR_DELETE 7
#define IDI_TOOLBAR_FIND 8
#define IDI_TOOLBAR_OPEN 9
#define IDI_TOOLBAR_SHOW 10
#define IDI_TOOLBAR_PROPERTIES 11
#define IDI_TOOLBAR_SENDTO 12
