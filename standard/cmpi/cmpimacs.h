// SPDX-License-Identifier: Apache-2.0
/**
 * Short forms of the calls through the function tables of CMPI 2.0, under their standard names.
 * Each is one call; a CMPIStatus* argument may be null. They are inline functions where the type of
 * the object is known, so that a wrong argument is a compile error.
 */
#ifndef STANDARD_CMPI_CMPIMACS_H
#define STANDARD_CMPI_CMPIMACS_H

#include "cmpidt.h"
#include "cmpift.h"

/* Any encapsulated object. */
#define CMRelease(o) ((o)->ft->release(o))
#define CMClone(o, rc) ((o)->ft->clone((o), (rc)))

#define CMIsNullValue(v) (((v).state & CMPI_nullValue) != 0)
#define CMIsArray(v) (((v).type & CMPI_ARRAY) != 0)

/* Broker: making objects. */

static inline CMPIInstance* CMNewInstance(const CMPIBroker* b, const CMPIObjectPath* op, CMPIStatus* rc) {
  return b->eft->newInstance(b, op, rc);
}
static inline CMPIObjectPath*
CMNewObjectPath(const CMPIBroker* b, const char* ns, const char* cn, CMPIStatus* rc) {
  return b->eft->newObjectPath(b, ns, cn, rc);
}
static inline CMPIArgs* CMNewArgs(const CMPIBroker* b, CMPIStatus* rc) {
  return b->eft->newArgs(b, rc);
}
static inline CMPIString* CMNewString(const CMPIBroker* b, const char* data, CMPIStatus* rc) {
  return b->eft->newString(b, data, rc);
}
static inline CMPIArray* CMNewArray(const CMPIBroker* b, CMPICount max, CMPIType type, CMPIStatus* rc) {
  return b->eft->newArray(b, max, type, rc);
}
static inline CMPIDateTime* CMNewDateTime(const CMPIBroker* b, CMPIStatus* rc) {
  return b->eft->newDateTime(b, rc);
}
static inline CMPIDateTime*
CMNewDateTimeFromChars(const CMPIBroker* b, const char* datetime, CMPIStatus* rc) {
  return b->eft->newDateTimeFromChars(b, datetime, rc);
}
static inline CMPIDateTime*
CMNewDateTimeFromBinary(const CMPIBroker* b, CMPIUint64 usecs, CMPIBoolean interval, CMPIStatus* rc) {
  return b->eft->newDateTimeFromBinary(b, usecs, interval, rc);
}
static inline CMPIBoolean
CMClassPathIsA(const CMPIBroker* b, const CMPIObjectPath* op, const char* type, CMPIStatus* rc) {
  return b->eft->classPathIsA(b, op, type, rc);
}

/* Broker: services. */

static inline CMPIContext* CBPrepareAttachThread(const CMPIBroker* b, const CMPIContext* c) {
  return b->bft->prepareAttachThread(b, c);
}
static inline CMPIStatus CBAttachThread(const CMPIBroker* b, const CMPIContext* c) {
  return b->bft->attachThread(b, c);
}
static inline CMPIStatus CBDetachThread(const CMPIBroker* b, const CMPIContext* c) {
  return b->bft->detachThread(b, c);
}
static inline CMPIStatus
CBDeliverIndication(const CMPIBroker* b, const CMPIContext* c, const char* ns, const CMPIInstance* ind) {
  return b->bft->deliverIndication(b, c, ns, ind);
}
static inline CMPIEnumeration*
CBEnumInstanceNames(const CMPIBroker* b, const CMPIContext* c, const CMPIObjectPath* op, CMPIStatus* rc) {
  return b->bft->enumerateInstanceNames(b, c, op, rc);
}
static inline CMPIEnumeration* CBEnumInstances(
    const CMPIBroker* b, const CMPIContext* c, const CMPIObjectPath* op, const char** properties,
    CMPIStatus* rc) {
  return b->bft->enumerateInstances(b, c, op, properties, rc);
}
static inline CMPIInstance* CBGetInstance(
    const CMPIBroker* b, const CMPIContext* c, const CMPIObjectPath* op, const char** properties,
    CMPIStatus* rc) {
  return b->bft->getInstance(b, c, op, properties, rc);
}
static inline CMPIData CBInvokeMethod(
    const CMPIBroker* b, const CMPIContext* c, const CMPIObjectPath* op, const char* method,
    const CMPIArgs* in, CMPIArgs* out, CMPIStatus* rc) {
  return b->bft->invokeMethod(b, c, op, method, in, out, rc);
}

/* Object paths. */

static inline CMPIStatus CMSetNameSpace(CMPIObjectPath* p, const char* ns) {
  return p->ft->setNameSpace(p, ns);
}
static inline CMPIString* CMGetNameSpace(const CMPIObjectPath* p, CMPIStatus* rc) {
  return p->ft->getNameSpace(p, rc);
}
static inline CMPIStatus CMSetHostname(CMPIObjectPath* p, const char* hn) {
  return p->ft->setHostname(p, hn);
}
static inline CMPIString* CMGetHostname(const CMPIObjectPath* p, CMPIStatus* rc) {
  return p->ft->getHostname(p, rc);
}
static inline CMPIStatus CMSetClassName(CMPIObjectPath* p, const char* cn) {
  return p->ft->setClassName(p, cn);
}
static inline CMPIString* CMGetClassName(const CMPIObjectPath* p, CMPIStatus* rc) {
  return p->ft->getClassName(p, rc);
}
static inline CMPIStatus CMAddKey(CMPIObjectPath* p, const char* n, const CMPIValue* v, CMPIType t) {
  return p->ft->addKey(p, n, v, t);
}
static inline CMPIData CMGetKey(const CMPIObjectPath* p, const char* n, CMPIStatus* rc) {
  return p->ft->getKey(p, n, rc);
}
static inline CMPIData CMGetKeyAt(const CMPIObjectPath* p, CMPICount i, CMPIString** n, CMPIStatus* rc) {
  return p->ft->getKeyAt(p, i, n, rc);
}
static inline CMPICount CMGetKeyCount(const CMPIObjectPath* p, CMPIStatus* rc) {
  return p->ft->getKeyCount(p, rc);
}

/* Instances. */

static inline CMPIData CMGetProperty(const CMPIInstance* i, const char* n, CMPIStatus* rc) {
  return i->ft->getProperty(i, n, rc);
}
static inline CMPIData CMGetPropertyAt(const CMPIInstance* i, CMPICount num, CMPIString** s, CMPIStatus* rc) {
  return i->ft->getPropertyAt(i, num, s, rc);
}
static inline CMPICount CMGetPropertyCount(const CMPIInstance* i, CMPIStatus* rc) {
  return i->ft->getPropertyCount(i, rc);
}
static inline CMPIStatus CMSetProperty(const CMPIInstance* i, const char* n, const CMPIValue* v, CMPIType t) {
  return i->ft->setProperty(i, n, v, t);
}
static inline CMPIObjectPath* CMGetObjectPath(const CMPIInstance* i, CMPIStatus* rc) {
  return i->ft->getObjectPath(i, rc);
}
static inline CMPIStatus CMSetPropertyFilter(CMPIInstance* i, const char** properties, const char** keys) {
  return i->ft->setPropertyFilter(i, properties, keys);
}

/* Method arguments. */

static inline CMPIStatus CMAddArg(const CMPIArgs* a, const char* n, const CMPIValue* v, CMPIType t) {
  return a->ft->addArg(a, n, v, t);
}
static inline CMPIData CMGetArg(const CMPIArgs* a, const char* n, CMPIStatus* rc) {
  return a->ft->getArg(a, n, rc);
}
static inline CMPIData CMGetArgAt(const CMPIArgs* a, CMPICount i, CMPIString** n, CMPIStatus* rc) {
  return a->ft->getArgAt(a, i, n, rc);
}
static inline CMPICount CMGetArgCount(const CMPIArgs* a, CMPIStatus* rc) {
  return a->ft->getArgCount(a, rc);
}

/* Strings, arrays, date-times. */

static inline const char* CMGetCharsPtr(const CMPIString* s, CMPIStatus* rc) {
  return s->ft->getCharPtr(s, rc);
}
static inline CMPICount CMGetArrayCount(const CMPIArray* a, CMPIStatus* rc) {
  return a->ft->getSize(a, rc);
}
static inline CMPIType CMGetArrayType(const CMPIArray* a, CMPIStatus* rc) {
  return a->ft->getSimpleType(a, rc);
}
static inline CMPIData CMGetArrayElementAt(const CMPIArray* a, CMPICount n, CMPIStatus* rc) {
  return a->ft->getElementAt(a, n, rc);
}
static inline CMPIStatus CMSetArrayElementAt(CMPIArray* a, CMPICount n, const CMPIValue* v, CMPIType t) {
  return a->ft->setElementAt(a, n, v, t);
}
static inline CMPIUint64 CMGetBinaryFormat(const CMPIDateTime* d, CMPIStatus* rc) {
  return d->ft->getBinaryFormat(d, rc);
}
static inline CMPIString* CMGetStringFormat(const CMPIDateTime* d, CMPIStatus* rc) {
  return d->ft->getStringFormat(d, rc);
}
static inline CMPIBoolean CMIsInterval(const CMPIDateTime* d, CMPIStatus* rc) {
  return d->ft->isInterval(d, rc);
}

/* Enumerations, results, contexts. */

static inline CMPIData CMGetNext(const CMPIEnumeration* e, CMPIStatus* rc) {
  return e->ft->getNext(e, rc);
}
static inline CMPIBoolean CMHasNext(const CMPIEnumeration* e, CMPIStatus* rc) {
  return e->ft->hasNext(e, rc);
}
static inline CMPIStatus CMReturnData(const CMPIResult* r, const CMPIValue* v, CMPIType t) {
  return r->ft->returnData(r, v, t);
}
static inline CMPIStatus CMReturnInstance(const CMPIResult* r, const CMPIInstance* i) {
  return r->ft->returnInstance(r, i);
}
static inline CMPIStatus CMReturnObjectPath(const CMPIResult* r, const CMPIObjectPath* p) {
  return r->ft->returnObjectPath(r, p);
}
static inline CMPIStatus CMReturnDone(const CMPIResult* r) {
  return r->ft->returnDone(r);
}
static inline CMPIData CMGetContextEntry(const CMPIContext* c, const char* n, CMPIStatus* rc) {
  return c->ft->getEntry(c, n, rc);
}
static inline CMPIStatus
CMAddContextEntry(const CMPIContext* c, const char* n, const CMPIValue* v, CMPIType t) {
  return c->ft->addEntry(c, n, v, t);
}

#endif
