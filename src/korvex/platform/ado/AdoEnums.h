// The data-access constants under their ADO names and values, so that code written against the
// classic object model reads the same here and late binding can resolve them by name.
#pragma once

#include <QObject>

namespace korvex::ado {
Q_NAMESPACE

enum CursorTypeEnum : int {
    adOpenUnspecified = -1,
    adOpenForwardOnly = 0,
    adOpenKeyset = 1,
    adOpenDynamic = 2,
    adOpenStatic = 3,
};
Q_ENUM_NS(CursorTypeEnum)

enum LockTypeEnum : int {
    adLockUnspecified = -1,
    adLockReadOnly = 1,
    adLockPessimistic = 2,
    adLockOptimistic = 3,
    adLockBatchOptimistic = 4,
};
Q_ENUM_NS(LockTypeEnum)

enum CursorLocationEnum : int {
    adUseNone = 1,
    adUseServer = 2,
    adUseClient = 3,
};
Q_ENUM_NS(CursorLocationEnum)

enum CommandTypeEnum : int {
    adCmdUnspecified = -1,
    adCmdText = 1,
    adCmdTable = 2,
    adCmdStoredProc = 4,
    adCmdUnknown = 8,
};
Q_ENUM_NS(CommandTypeEnum)

enum ObjectStateEnum : int {
    adStateClosed = 0,
    adStateOpen = 1,
    adStateConnecting = 2,
    adStateExecuting = 4,
    adStateFetching = 8,
};
Q_ENUM_NS(ObjectStateEnum)

enum EditModeEnum : int {
    adEditNone = 0,
    adEditInProgress = 1,
    adEditAdd = 2,
    adEditDelete = 4,
};
Q_ENUM_NS(EditModeEnum)

enum RecordStatusEnum : int {
    adRecOK = 0,
    adRecNew = 0x1,
    adRecModified = 0x2,
    adRecDeleted = 0x4,
    adRecUnmodified = 0x8,
    adRecInvalid = 0x10,
    adRecMultipleChanges = 0x40,
    adRecPendingChanges = 0x80,
    adRecCanceled = 0x100,
    adRecCantRelease = 0x400,
    adRecConcurrencyViolation = 0x800,
    adRecIntegrityViolation = 0x1000,
    adRecMaxChangesExceeded = 0x2000,
    adRecObjectOpen = 0x4000,
    adRecOutOfMemory = 0x8000,
    adRecPermissionDenied = 0x10000,
    adRecSchemaViolation = 0x20000,
    adRecDBDeleted = 0x40000,
};
Q_ENUM_NS(RecordStatusEnum)

enum FilterGroupEnum : int {
    adFilterNone = 0,
    adFilterPendingRecords = 1,
    adFilterAffectedRecords = 2,
    adFilterFetchedRecords = 3,
    adFilterPredicate = 4,
    adFilterConflictingRecords = 5,
};
Q_ENUM_NS(FilterGroupEnum)

enum PositionEnum : int {
    adPosUnknown = -1,
    adPosBOF = -2,
    adPosEOF = -3,
};
Q_ENUM_NS(PositionEnum)

enum BookmarkEnum : int {
    adBookmarkCurrent = 0,
    adBookmarkFirst = 1,
    adBookmarkLast = 2,
};
Q_ENUM_NS(BookmarkEnum)

enum CompareEnum : int {
    adCompareLessThan = 0,
    adCompareEqual = 1,
    adCompareGreaterThan = 2,
    adCompareNotEqual = 3,
    adCompareNotComparable = 4,
};
Q_ENUM_NS(CompareEnum)

enum SearchDirectionEnum : int {
    adSearchBackward = -1,
    adSearchForward = 1,
};
Q_ENUM_NS(SearchDirectionEnum)

enum AffectEnum : int {
    adAffectCurrent = 1,
    adAffectGroup = 2,
    adAffectAll = 3,
    adAffectAllChapters = 4,
};
Q_ENUM_NS(AffectEnum)

enum ResyncEnum : int {
    adResyncUnderlyingValues = 1,
    adResyncAllValues = 2,
};
Q_ENUM_NS(ResyncEnum)

enum EventReasonEnum : int {
    adRsnAddNew = 1,
    adRsnDelete = 2,
    adRsnUpdate = 3,
    adRsnUndoUpdate = 4,
    adRsnUndoAddNew = 5,
    adRsnUndoDelete = 6,
    adRsnRequery = 7,
    adRsnResynch = 8,
    adRsnClose = 9,
    adRsnMove = 10,
    adRsnFirstChange = 11,
    adRsnMoveFirst = 12,
    adRsnMoveNext = 13,
    adRsnMovePrevious = 14,
    adRsnMoveLast = 15,
};
Q_ENUM_NS(EventReasonEnum)

enum EventStatusEnum : int {
    adStatusOK = 1,
    adStatusErrorsOccurred = 2,
    adStatusCantDeny = 3,
    adStatusCancel = 4,
    adStatusUnwantedEvent = 5,
};
Q_ENUM_NS(EventStatusEnum)

enum DataTypeEnum : int {
    adEmpty = 0,
    adSmallInt = 2,
    adInteger = 3,
    adSingle = 4,
    adDouble = 5,
    adCurrency = 6,
    adDate = 7,
    adBSTR = 8,
    adIDispatch = 9,
    adError = 10,
    adBoolean = 11,
    adVariant = 12,
    adIUnknown = 13,
    adDecimal = 14,
    adTinyInt = 16,
    adUnsignedTinyInt = 17,
    adUnsignedSmallInt = 18,
    adUnsignedInt = 19,
    adBigInt = 20,
    adUnsignedBigInt = 21,
    adFileTime = 64,
    adGUID = 72,
    adBinary = 128,
    adChar = 129,
    adWChar = 130,
    adNumeric = 131,
    adUserDefined = 132,
    adDBDate = 133,
    adDBTime = 134,
    adDBTimeStamp = 135,
    adChapter = 136,
    adPropVariant = 138,
    adVarNumeric = 139,
    adVarChar = 200,
    adLongVarChar = 201,
    adVarWChar = 202,
    adLongVarWChar = 203,
    adVarBinary = 204,
    adLongVarBinary = 205,
};
Q_ENUM_NS(DataTypeEnum)

enum FieldAttributeEnum : int {
    adFldUnspecified = -1,
    adFldMayDefer = 0x2,
    adFldUpdatable = 0x4,
    adFldUnknownUpdatable = 0x8,
    adFldFixed = 0x10,
    adFldIsNullable = 0x20,
    adFldMayBeNull = 0x40,
    adFldLong = 0x80,
    adFldRowID = 0x100,
    adFldRowVersion = 0x200,
    adFldCacheDeferred = 0x1000,
    adFldIsChapter = 0x2000,
    adFldNegativeScale = 0x4000,
    adFldKeyColumn = 0x8000,
};
Q_ENUM_NS(FieldAttributeEnum)

enum FieldStatusEnum : int {
    adFieldOK = 0,
    adFieldCantConvertValue = 2,
    adFieldIsNull = 3,
    adFieldTruncated = 4,
    adFieldSignMismatch = 5,
    adFieldDataOverflow = 6,
    adFieldCantCreate = 7,
    adFieldUnavailable = 8,
    adFieldPermissionDenied = 9,
    adFieldIntegrityViolation = 10,
    adFieldSchemaViolation = 11,
    adFieldBadStatus = 12,
    adFieldDefault = 13,
};
Q_ENUM_NS(FieldStatusEnum)

enum PropertyAttributesEnum : int {
    adPropNotSupported = 0,
    adPropRequired = 1,
    adPropOptional = 2,
    adPropRead = 512,
    adPropWrite = 1024,
};
Q_ENUM_NS(PropertyAttributesEnum)

// The run-time errors, as the positive numbers the host language reports.
enum ErrorValueEnum : int {
    adErrProviderFailed = 3000,
    adErrInvalidArgument = 3001,
    adErrNoCurrentRecord = 3021,
    adErrIllegalOperation = 3219,
    adErrFeatureNotAvailable = 3251,
    adErrItemNotFound = 3265,
    adErrObjectInCollection = 3367,
    adErrDataConversion = 3421,
    adErrObjectClosed = 3704,
    adErrObjectOpen = 3705,
    adErrInvalidConnection = 3709,
    adErrNotReentrant = 3710,
    adErrOperationCancelled = 3712,
    adErrPermissionDenied = 3720,
};
Q_ENUM_NS(ErrorValueEnum)

}  // namespace korvex::ado
