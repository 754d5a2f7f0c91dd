/* Numbers of the dialogs, their controls and the texts of hdoexport.rc. */
#ifndef RESOURCES_RESOURCE_H
#define RESOURCES_RESOURCE_H

#define IDD_ABOUT 102
#define IDD_OPTIONS 103

#define IDC_BACK 1

#define IDC_CANCEL 2
#define IDC_EXPORT 3
#define IDC_EXPORT_MOTION 1028 /* a command that no control sends */
#define IDC_EXPORT_HIDDEN 1032
#define IDC_OPTIMIZE_SKIN 1034
#define IDC_MOTIONS_FOR_HIDDEN 1037
#define IDC_NON_RENDERABLE 1038
#define IDC_SAMPLE_RATE 1042
#define IDC_THRESHOLD_EDIT 1044
#define IDC_THRESHOLD_SPINNER 1045
#define IDC_MAX_WEIGHTS 1046 /* not in the dialog */
#define IDC_SAMPLE_ANIMATION 1049
#define IDC_SAMPLE_RATE_LABEL 1050
#define IDC_SAMPLE_RATE_UNIT 1051
#define IDC_MORPHERS 1052
#define IDC_THRESHOLD_LABEL 1053

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

#define MAKER_COPYRIGHT "Copyright (C) 2026 Kestrel Works"
#define MAKER_WEB_ADDRESS "https://kestrelworks.example/"

#endif /* RESOURCES_RESOURCE_H */
