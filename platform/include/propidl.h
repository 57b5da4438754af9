/// Property sets: well-known sets and properties, and the functions.
#pragma once

#include "propidlbase.h"

EXTERN_C VELK_LAYER_EXPORT FMTID const FMTID_SummaryInformation;
EXTERN_C VELK_LAYER_EXPORT FMTID const FMTID_DocSummaryInformation;
/// The second section of the document summary information.
EXTERN_C VELK_LAYER_EXPORT FMTID const FMTID_UserDefinedProperties;
EXTERN_C VELK_LAYER_EXPORT FMTID const FMTID_MediaFileSummaryInformation;

#define PROPSETFLAG_DEFAULT 0U
#define PROPSETFLAG_NONSIMPLE 1U
#define PROPSETFLAG_ANSI 2U
#define PROPSETFLAG_UNBUFFERED 4U
#define PROPSETFLAG_CASE_SENSITIVE 8U

#define PROPSET_BEHAVIOR_CASE_SENSITIVE 1U

#define PID_DICTIONARY 0x0U
#define PID_CODEPAGE 0x1U
#define PID_FIRST_USABLE 0x2U
#define PID_FIRST_NAME_DEFAULT 0xfffU
#define PID_LOCALE 0x80000000U
#define PID_MODIFY_TIME 0x80000001U
#define PID_SECURITY 0x80000002U
#define PID_BEHAVIOR 0x80000003U
#define PID_ILLEGAL 0xffffffffU
#define PID_MIN_READONLY 0x80000000U
#define PID_MAX_READONLY 0xbfffffffU

// Summary information.
#define PIDSI_TITLE 2
#define PIDSI_SUBJECT 3
#define PIDSI_AUTHOR 4
#define PIDSI_KEYWORDS 5
#define PIDSI_COMMENTS 6
#define PIDSI_TEMPLATE 7
#define PIDSI_LASTAUTHOR 8
#define PIDSI_REVNUMBER 9
#define PIDSI_EDITTIME 10
#define PIDSI_LASTPRINTED 11
#define PIDSI_CREATE_DTM 12
#define PIDSI_LASTSAVE_DTM 13
#define PIDSI_PAGECOUNT 14
#define PIDSI_WORDCOUNT 15
#define PIDSI_CHARCOUNT 16
#define PIDSI_THUMBNAIL 17
#define PIDSI_APPNAME 18
#define PIDSI_DOC_SECURITY 19

// Document summary information.
#define PIDDSI_CATEGORY 2
#define PIDDSI_PRESFORMAT 3
#define PIDDSI_BYTECOUNT 4
#define PIDDSI_LINECOUNT 5
#define PIDDSI_PARCOUNT 6
#define PIDDSI_SLIDECOUNT 7
#define PIDDSI_NOTECOUNT 8
#define PIDDSI_HIDDENCOUNT 9
#define PIDDSI_MMCLIPCOUNT 10
#define PIDDSI_SCALE 11
#define PIDDSI_HEADINGPAIR 12
#define PIDDSI_DOCPARTS 13
#define PIDDSI_MANAGER 14
#define PIDDSI_COMPANY 15
#define PIDDSI_LINKSDIRTY 16

// Media file summary information.
#define PIDMSI_EDITOR 2
#define PIDMSI_SUPPLIER 3
#define PIDMSI_SOURCE 4
#define PIDMSI_SEQUENCE_NO 5
#define PIDMSI_PROJECT 6
#define PIDMSI_STATUS 7
#define PIDMSI_OWNER 8
#define PIDMSI_RATING 9
#define PIDMSI_PRODUCTION 10
#define PIDMSI_COPYRIGHT 11

/// Gives back what a value holds and makes it VT_EMPTY. A value of a type that
/// is not known is made VT_EMPTY too, with STG_E_INVALIDPARAMETER.
WINOLEAPI PropVariantClear(PROPVARIANT* value);
