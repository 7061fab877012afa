// The plug-in's registration as data: every registry value that makes its classes creatable by ProgID
// and its type library and interfaces known, below a classes root (HKCR, or HKCU\Software\Classes).
// DllRegisterServer writes exactly these values (Server.cpp); the installer packages carry them as their
// own Registry rows, generated from this same list (packaging/). Plain C++ without <windows.h>, so that
// the generator builds on the build machine.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace rx9400::registration {

/// One creatable class; its ProgID is the library's name, a dot and the class's name.
struct ComClass {
  std::string_view name;
  std::string_view classId;
};

/// One interface of the type library and the marshaler that carries it between apartments.
struct ComInterface {
  enum class Kind { Dual, DispatchOnly };
  std::string_view name;
  std::string_view interfaceId;
  Kind kind;
};

inline constexpr std::string_view kLibraryName = "TamsaRX9400VTI";
inline constexpr std::string_view kLibraryId = "{B031DC0D-2650-472B-B309-581B20E3D309}";
inline constexpr std::string_view kLibraryVersion = "1.0";
inline constexpr std::string_view kLibraryDescription = "Tamsa RX9400 instrument plug-in";

inline constexpr ComClass kClasses[] = {
    {"CRX9400Query", "{2698AA60-0074-4433-8872-D732BB30FF3C}"},
    {"CRX9400VTI", "{06F62405-21B1-420D-8AE8-952DBA323392}"},
    {"CStoreDetectorType", "{0171179B-7E56-45E0-9610-FB38E7FB7344}"},
};

inline constexpr ComInterface kInterfaces[] = {
    {"_CRX9400Query", "{0BB84A15-5B65-4374-B99D-9C2713341B46}", ComInterface::Kind::Dual},
    {"_CRX9400VTI", "{01AFA9E9-A1AD-4F37-8993-118769810C17}", ComInterface::Kind::Dual},
    {"_CStoreDetectorType", "{920EBF7B-3F08-4766-B2B8-3DBD7F7A6AA6}", ComInterface::Kind::Dual},
    {"__CRX9400VTI", "{BC30B334-74A3-4E3A-9776-1050324ED6AB}", ComInterface::Kind::DispatchOnly},
};

/// The type library marshaler (dual and automation interfaces) and the dispatch marshaler.
inline constexpr std::string_view kTypeLibraryMarshaler = "{00020424-0000-0000-C000-000000000046}";
inline constexpr std::string_view kDispatchMarshaler = "{00020420-0000-0000-C000-000000000046}";

/// Which registry view the DLL belongs to: the type library's path is filed under win32 or win64.
enum class Bitness { Bits32, Bits64 };

/// One value below the classes root, a string. An empty `name` is the key's default value. A value
/// that is the plug-in DLL's full path has no `text`: the writer puts in the path where it writes.
struct Value {
  enum class Data { Text, ModulePath };
  std::string key;
  std::string name;
  std::string text;
  Data data = Data::Text;
};

/// Every value a registration writes, parents before children.
inline std::vector<Value> values(Bitness bitness) {
  using Data = Value::Data;
  std::vector<Value> out;
  const std::string library(kLibraryId), version(kLibraryVersion);
  for (const ComClass& entry : kClasses) {
    const std::string name(entry.name), progId = std::string(kLibraryName) + "." + name;
    const std::string key = "CLSID\\" + std::string(entry.classId);
    out.push_back({key, "", name});
    out.push_back({key + "\\InprocServer32", "", "", Data::ModulePath});
    out.push_back({key + "\\InprocServer32", "ThreadingModel", "Apartment"});
    out.push_back({key + "\\ProgID", "", progId});
    out.push_back({key + "\\VersionIndependentProgID", "", progId});
    out.push_back({key + "\\TypeLib", "", library});
    out.push_back({key + "\\VERSION", "", version});
    out.push_back({key + "\\Programmable", "", ""});
    out.push_back({progId, "", name});
    out.push_back({progId + "\\CLSID", "", std::string(entry.classId)});
  }
  const std::string libraryKey = "TypeLib\\" + library + "\\" + version;
  out.push_back({libraryKey, "", std::string(kLibraryDescription)});
  out.push_back({libraryKey + "\\FLAGS", "", "0"});
  out.push_back(
      {libraryKey + (bitness == Bitness::Bits64 ? "\\0\\win64" : "\\0\\win32"), "", "", Data::ModulePath});
  for (const ComInterface& entry : kInterfaces) {
    const std::string key = "Interface\\" + std::string(entry.interfaceId);
    const std::string marshaler(entry.kind == ComInterface::Kind::Dual ? kTypeLibraryMarshaler
                                                                       : kDispatchMarshaler);
    out.push_back({key, "", std::string(entry.name)});
    out.push_back({key + "\\ProxyStubClsid", "", marshaler});
    out.push_back({key + "\\ProxyStubClsid32", "", marshaler});
    out.push_back({key + "\\TypeLib", "", library});
    out.push_back({key + "\\TypeLib", "Version", version});
  }
  return out;
}

/// The keys a registration owns whole: unregistration deletes each with everything below it.
inline std::vector<std::string> ownedKeys() {
  std::vector<std::string> out;
  for (const ComClass& entry : kClasses) {
    out.push_back("CLSID\\" + std::string(entry.classId));
    out.push_back(std::string(kLibraryName) + "." + std::string(entry.name));
  }
  out.push_back("TypeLib\\" + std::string(kLibraryId));
  for (const ComInterface& entry : kInterfaces) out.push_back("Interface\\" + std::string(entry.interfaceId));
  return out;
}

}  // namespace rx9400::registration
