// SPDX-License-Identifier: Apache-2.0
/**
 * Data types of CMPI 2.0 for Linux x86-64: scalars, type codes, states, return codes and the
 * encapsulated objects. Usable from C and C++.
 */
#ifndef STANDARD_CMPI_CMPIDT_H
#define STANDARD_CMPI_CMPIDT_H

#ifdef __cplusplus
extern "C" {
#endif

/** Version of the function tables described by these files. */
#define CMPIVersion200 200

typedef unsigned char CMPIBoolean;
typedef unsigned short CMPIChar16;
typedef unsigned char CMPIUint8;
typedef unsigned short CMPIUint16;
typedef unsigned int CMPIUint32;
typedef unsigned long long CMPIUint64;
typedef signed char CMPISint8;
typedef short CMPISint16;
typedef int CMPISint32;
typedef long long CMPISint64;
typedef float CMPIReal32;
typedef double CMPIReal64;

typedef unsigned int CMPICount;
typedef unsigned int CMPIFlags;
typedef unsigned short CMPIType;
typedef unsigned short CMPIValueState;
typedef void* CMPIMsgFileHandle;
typedef void CMPIGcStat;

typedef struct CMPIBroker CMPIBroker;
typedef struct CMPIBrokerFT CMPIBrokerFT;
typedef struct CMPIBrokerEncFT CMPIBrokerEncFT;
typedef struct CMPIBrokerExtFT CMPIBrokerExtFT;
typedef struct CMPIBrokerMemFT CMPIBrokerMemFT;

typedef struct CMPIObjectPath CMPIObjectPath;
typedef struct CMPIObjectPathFT CMPIObjectPathFT;
typedef struct CMPIInstance CMPIInstance;
typedef struct CMPIInstanceFT CMPIInstanceFT;
typedef struct CMPIArgs CMPIArgs;
typedef struct CMPIArgsFT CMPIArgsFT;
typedef struct CMPIString CMPIString;
typedef struct CMPIStringFT CMPIStringFT;
typedef struct CMPIArray CMPIArray;
typedef struct CMPIArrayFT CMPIArrayFT;
typedef struct CMPIEnumeration CMPIEnumeration;
typedef struct CMPIEnumerationFT CMPIEnumerationFT;
typedef struct CMPIDateTime CMPIDateTime;
typedef struct CMPIDateTimeFT CMPIDateTimeFT;
typedef struct CMPIResult CMPIResult;
typedef struct CMPIResultFT CMPIResultFT;
typedef struct CMPIContext CMPIContext;
typedef struct CMPIContextFT CMPIContextFT;
typedef struct CMPISelectExp CMPISelectExp;
typedef struct CMPISelectExpFT CMPISelectExpFT;
typedef struct CMPISelectCond CMPISelectCond;
typedef struct CMPISelectCondFT CMPISelectCondFT;
typedef struct CMPIError CMPIError;
typedef struct CMPIErrorFT CMPIErrorFT;
typedef struct CMPIInstanceMI CMPIInstanceMI;
typedef struct CMPIInstanceMIFT CMPIInstanceMIFT;
typedef struct CMPIMethodMI CMPIMethodMI;
typedef struct CMPIMethodMIFT CMPIMethodMIFT;
typedef struct CMPIAssociationMI CMPIAssociationMI;
typedef struct CMPIAssociationMIFT CMPIAssociationMIFT;
typedef struct CMPIIndicationMI CMPIIndicationMI;
typedef struct CMPIIndicationMIFT CMPIIndicationMIFT;

/** A block of bytes with its length. */
typedef struct CMPIValuePtr {
  void* ptr;
  CMPICount length;
} CMPIValuePtr;

/** The value of a property, key, argument or array element; the accompanying CMPIType selects the member. */
typedef union CMPIValue {
  CMPIBoolean boolean;
  CMPIChar16 char16;
  CMPIUint8 uint8;
  CMPIUint16 uint16;
  CMPIUint32 uint32;
  CMPIUint64 uint64;
  CMPISint8 sint8;
  CMPISint16 sint16;
  CMPISint32 sint32;
  CMPISint64 sint64;
  CMPIReal32 real32;
  CMPIReal64 real64;
  CMPIInstance* inst;
  CMPIObjectPath* ref;
  CMPIArgs* args;
  CMPISelectExp* filter;
  CMPIEnumeration* Enum;
  CMPIArray* array;
  CMPIString* string;
  char* chars;
  CMPIDateTime* dateTime;
  CMPIValuePtr dataPtr;
  CMPISint8 Byte;
  CMPISint16 Short;
  CMPISint32 Int;
  CMPISint64 Long;
  CMPIReal32 Float;
  CMPIReal64 Double;
} CMPIValue;

/** Codes of CMPIType; an array of T is T + CMPI_ARRAY. */
enum {
  CMPI_null = 0,
  CMPI_boolean = 2,
  CMPI_char16 = 3,
  CMPI_real32 = 8,
  CMPI_real64 = 12,
  CMPI_uint8 = 128,
  CMPI_uint16 = 144,
  CMPI_uint32 = 160,
  CMPI_uint64 = 176,
  CMPI_sint8 = 192,
  CMPI_sint16 = 208,
  CMPI_sint32 = 224,
  CMPI_sint64 = 240,
  CMPI_instance = 4096,
  CMPI_ref = 4352,
  CMPI_args = 4608,
  CMPI_class = 4864,
  CMPI_filter = 5120,
  CMPI_enumeration = 5376,
  CMPI_string = 5632,
  CMPI_chars = 5888,
  CMPI_dateTime = 6144,
  CMPI_ptr = 6400,
  CMPI_charsptr = 6656,
  CMPI_ARRAY = 8192,
  CMPI_booleanA = CMPI_boolean + CMPI_ARRAY,
  CMPI_char16A = CMPI_char16 + CMPI_ARRAY,
  CMPI_real32A = CMPI_real32 + CMPI_ARRAY,
  CMPI_real64A = CMPI_real64 + CMPI_ARRAY,
  CMPI_uint8A = CMPI_uint8 + CMPI_ARRAY,
  CMPI_uint16A = CMPI_uint16 + CMPI_ARRAY,
  CMPI_uint32A = CMPI_uint32 + CMPI_ARRAY,
  CMPI_uint64A = CMPI_uint64 + CMPI_ARRAY,
  CMPI_sint8A = CMPI_sint8 + CMPI_ARRAY,
  CMPI_sint16A = CMPI_sint16 + CMPI_ARRAY,
  CMPI_sint32A = CMPI_sint32 + CMPI_ARRAY,
  CMPI_sint64A = CMPI_sint64 + CMPI_ARRAY,
  CMPI_instanceA = CMPI_instance + CMPI_ARRAY,
  CMPI_refA = CMPI_ref + CMPI_ARRAY,
  CMPI_argsA = CMPI_args + CMPI_ARRAY,
  CMPI_classA = CMPI_class + CMPI_ARRAY,
  CMPI_filterA = CMPI_filter + CMPI_ARRAY,
  CMPI_enumerationA = CMPI_enumeration + CMPI_ARRAY,
  CMPI_stringA = CMPI_string + CMPI_ARRAY,
  CMPI_charsA = CMPI_chars + CMPI_ARRAY,
  CMPI_dateTimeA = CMPI_dateTime + CMPI_ARRAY,
  CMPI_ptrA = CMPI_ptr + CMPI_ARRAY,
  CMPI_charsptrA = CMPI_charsptr + CMPI_ARRAY,

  /* Groups of types, to be tested with a bitwise and. */
  CMPI_SIMPLE = 2,
  CMPI_REAL = 8,
  CMPI_UINT = 128,
  CMPI_SINT = 192,
  CMPI_INTEGER = 192,
  CMPI_ENC = 4096,

  /* Types in which an object manager passes keys. */
  CMPI_keyInteger = CMPI_sint64,
  CMPI_keyString = CMPI_string,
  CMPI_keyBoolean = CMPI_boolean,
  CMPI_keyRef = CMPI_ref
};

/** Codes of CMPIValueState. */
enum {
  CMPI_goodValue = 0,
  CMPI_nullValue = 256,
  CMPI_keyValue = 512,
  CMPI_notFound = 1024,
  CMPI_badValue = 32768
};

/** A typed value as a getter returns it. */
typedef struct CMPIData {
  CMPIType type;
  CMPIValueState state;
  CMPIValue value;
} CMPIData;

/** Return codes; 1 to 17 are the CIM status codes. */
typedef enum CMPIrc {
  CMPI_RC_OK = 0,
  CMPI_RC_ERR_FAILED = 1,
  CMPI_RC_ERR_ACCESS_DENIED = 2,
  CMPI_RC_ERR_INVALID_NAMESPACE = 3,
  CMPI_RC_ERR_INVALID_PARAMETER = 4,
  CMPI_RC_ERR_INVALID_CLASS = 5,
  CMPI_RC_ERR_NOT_FOUND = 6,
  CMPI_RC_ERR_NOT_SUPPORTED = 7,
  CMPI_RC_ERR_CLASS_HAS_CHILDREN = 8,
  CMPI_RC_ERR_CLASS_HAS_INSTANCES = 9,
  CMPI_RC_ERR_INVALID_SUPERCLASS = 10,
  CMPI_RC_ERR_ALREADY_EXISTS = 11,
  CMPI_RC_ERR_NO_SUCH_PROPERTY = 12,
  CMPI_RC_ERR_TYPE_MISMATCH = 13,
  CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED = 14,
  CMPI_RC_ERR_INVALID_QUERY = 15,
  CMPI_RC_ERR_METHOD_NOT_AVAILABLE = 16,
  CMPI_RC_ERR_METHOD_NOT_FOUND = 17,
  CMPI_RC_DO_NOT_UNLOAD = 50,
  CMPI_RC_NEVER_UNLOAD = 51,
  CMPI_RC_ERR_INVALID_HANDLE = 60,
  CMPI_RC_ERR_INVALID_DATA_TYPE = 61,
  CMPI_RC_ERROR_SYSTEM = 100,
  CMPI_RC_ERROR = 200
} CMPIrc;

/** Outcome of a call; msg may be null. */
typedef struct CMPIStatus {
  CMPIrc rc;
  CMPIString* msg;
} CMPIStatus;

typedef enum CMPIErrorType { CMPIUnknownErrorType = 0, CMPIOtherErrorType = 1 } CMPIErrorType;
typedef enum CMPIErrorSeverity { CMPIErrorSevUnknown = 0 } CMPIErrorSeverity;
typedef enum CMPIErrorProbableCause { CMPIErrorProbCauseUnknown = 0 } CMPIErrorProbableCause;
typedef enum CMPIErrorSrcFormat { CMPIErrorSrcFormatUnknown = 0 } CMPIErrorSrcFormat;

/** Reads one property of a foreign object for CMPISelectExpFT::evaluateUsingAccessor. */
typedef CMPIData CMPIAccessor(const char*, void*);

/** The object manager's side: an opaque handle and its four function tables. */
struct CMPIBroker {
  void* hdl;
  CMPIBrokerFT* bft;
  CMPIBrokerEncFT* eft;
  CMPIBrokerExtFT* xft;
  CMPIBrokerMemFT* mft;
};

/* Every encapsulated object and every provider interface is a handle and a function table. */
struct CMPIObjectPath {
  void* hdl;
  CMPIObjectPathFT* ft;
};
struct CMPIInstance {
  void* hdl;
  CMPIInstanceFT* ft;
};
struct CMPIArgs {
  void* hdl;
  CMPIArgsFT* ft;
};
struct CMPIString {
  void* hdl;
  CMPIStringFT* ft;
};
struct CMPIArray {
  void* hdl;
  CMPIArrayFT* ft;
};
struct CMPIEnumeration {
  void* hdl;
  CMPIEnumerationFT* ft;
};
struct CMPIDateTime {
  void* hdl;
  CMPIDateTimeFT* ft;
};
struct CMPIResult {
  void* hdl;
  CMPIResultFT* ft;
};
struct CMPIContext {
  void* hdl;
  CMPIContextFT* ft;
};
struct CMPISelectExp {
  void* hdl;
  CMPISelectExpFT* ft;
};
struct CMPISelectCond {
  void* hdl;
  CMPISelectCondFT* ft;
};
struct CMPIError {
  void* hdl;
  CMPIErrorFT* ft;
};
struct CMPIInstanceMI {
  void* hdl;
  CMPIInstanceMIFT* ft;
};
struct CMPIMethodMI {
  void* hdl;
  CMPIMethodMIFT* ft;
};
struct CMPIAssociationMI {
  void* hdl;
  CMPIAssociationMIFT* ft;
};
struct CMPIIndicationMI {
  void* hdl;
  CMPIIndicationMIFT* ft;
};

/* Entries of a CMPIContext: all are strings, except the flags, a uint32. */
#define CMPIPrincipal "CMPIPrincipal"
#define CMPIInvocationFlags "CMPIInvocationFlags"
#define CMPIInitNameSpace "CMPIInitNameSpace"
#define CMPIRole "CMPIRole"
#define CMPIAcceptLanguage "CMPIAcceptLanguage"
#define CMPIContentLanguage "CMPIContentLanguage"

/* Bits of the entry CMPIInvocationFlags. */
#define CMPI_FLAG_LocalOnly 1
#define CMPI_FLAG_DeepInheritance 2
#define CMPI_FLAG_IncludeQualifiers 4
#define CMPI_FLAG_IncludeClassOrigin 8

#ifdef __cplusplus
}
#endif

#endif
