/* Numbers of the dialogs and texts of hdoexport.rc. */
#ifndef RESOURCES_RESOURCE_H
#define RESOURCES_RESOURCE_H

#define IDD_ABOUT 102
#define IDD_OPTIONS 103

#define IDS_LIBDESCRIPTION 1
#define IDS_CLASS_NAME 1
#define IDS_CATEGORY 2
#define IDS_EXTENSION 3
#define IDS_LONGDESC 4
#define IDS_SHORTDESC 5
#define IDS_COPYRIGHT 6
#define IDS_PROGRESS 7
#define IDS_VERSION 8
#define IDS_NAME 9

#endif /* RESOURCES_RESOURCE_H */
