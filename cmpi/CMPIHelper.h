// SPDX-License-Identifier: Apache-2.0
#ifndef CMPI_CMPIHELPER_H
#define CMPI_CMPIHELPER_H

#include "CIM/Framework/CIMInstance.h"
#include "CIM/Framework/CIMMethodParam.h"
#include "CIM/Framework/CIMObjectPath.h"
#include "cmpidt.h"

#include <string>
#include <vector>

namespace tvp::cim::adap::cmpi {

/**
 * Translates between the encapsulated objects of CMPI and the framework's types, and resolves association
 * classes.
 *
 * Failures are thrown as CIMException. Unless said otherwise the code is FW_RC_FAILED with the text " ::
 * Operation Failed" for a failed CMPI call, and FW_RC_NOT_SUPPORTED for a type that the direction does not
 * support. A null object, or one with a null handle, fails as its first CMPI call would. The two directions
 * deliberately support different types. Stateless: any thread may call, one of the provider's own threads
 * only while it is attached to the broker.
 *
 * Intermediate objects are released on every path; a returned object belongs to the caller, who releases it
 * or leaves it to the end of the request.
 */
class CMPIHelper {
public:
  /**
   * Fills a path with namespace, class and, if requested, the keys of a CMPI path. The host becomes the name
   * of this host, whatever the CMPI path says. A path whose namespace or class text is null is left half
   * filled, with a line in the log.
   * @throws CIMException FW_RC_INVALID_NAMESPACE or FW_RC_INVALID_CLASS if the path cannot return them
   */
  static void
  CMPIObjectPathToFrameworkObjectPath(CMPIObjectPath const* op, bool withKeys, fwf::CIMObjectPath& out);

  /**
   * Replaces the key bindings of a path with the string, boolean, sint64 and reference keys of a CMPI path;
   * keys of other types, keys without the state CMPI_keyValue and keys that are counted but answer
   * CMPI_RC_ERR_NO_SUCH_PROPERTY are dropped. A sint64 key becomes a uint32
   * of its low 32 bits. A CMPI path without any key leaves the bindings as they are. @return true
   */
  static bool setKeys(CMPIObjectPath const* op, fwf::CIMObjectPath& out);

  /** The text of a CMPI path for a log line; that of an empty path if it cannot be read. Not traced. */
  static std::string objectPathText(CMPIObjectPath const* op);

  /**
   * A new CMPI path with all key bindings that have a value; the others are named in the log. Types beyond
   * scalars and arrays of the simple kinds and scalar references are refused with FW_RC_NOT_SUPPORTED.
   * @return null if the broker returns neither an object nor an error
   */
  static CMPIObjectPath*
  FrameworkObjectPathToCMPIObjectPath(fwf::CIMObjectPath const& path, CMPIBroker const* broker);

  /** Appends the strings of a null-terminated array; a null array adds nothing. */
  static void ConvertChartoStringVector(char const* const* list, std::vector<std::string>& out);

  /** Fills an instance with the class of a path and the properties of a CMPI instance. @return true */
  static bool
  CMPIInstanceToFrameworkInstance(CMPIInstance const* ci, fwf::CIMObjectPath& path, fwf::CIMInstance& out);

  /**
   * Adds the properties of a CMPI instance: boolean, the unsigned integers, string, datetime, and
   * references without their keys. Null values and other types are dropped. @return true
   */
  static bool setProps(CMPIInstance const* ci, fwf::CIMInstance& out);

  /**
   * A new CMPI instance. Key bindings of an array type are left out of its path, since object managers refuse
   * them or crash on them; their properties are set like all others.
   * @param properties names of the wanted properties, terminated by a null pointer; null means all
   * @return null if the broker returns no path or no instance, and no error
   */
  static CMPIInstance* FrameworkInstanceToCMPIInstance(
      fwf::CIMInstance const& inst, CMPIBroker const* broker, char const** properties);

  /** Appends one argument for every CMPI argument; a null value becomes a value with the null flag. */
  static void CMPIArgsToFrameWorkMethodParam(CMPIArgs const* in, fwf::CIMMethodParam& out);

  /** Adds every argument to a list of CMPI arguments. */
  static void FrameworkArgumentsToCMPIArguments(
      fwf::CIMMethodParam const& params, CMPIArgs* out, CMPIBroker const* broker);

  /**
   * Appends the registered classes, in lower case, that take part in an association request.
   * @param assocClass selects its registered subclasses, not the class itself; if null, the classes with an
   * end that is the class of the path, or a standard class (CIM_...) that it derives from Throws nothing: a
   * class that cannot be checked is left out.
   */
  static void GetAssociationClasses(
      fwf::CIMObjectPath const& path, char const* assocClass, CMPIBroker const* broker,
      std::vector<std::string>& out);

  /** The CMPI code of a caught exception's code: 2 to 18 stay, everything else is CMPI_RC_ERR_FAILED. */
  static CMPIrc ConvertFrameWorkErrorCodeToCmpiErrorCode(unsigned int code);
};

}  // namespace tvp::cim::adap::cmpi

#endif
