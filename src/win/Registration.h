// Registration as data: for each COM server of the project (the plug-in DLL, the MsgForm EXE) every
// registry value that makes its classes creatable by ProgID and its type library and interfaces known,
// below a classes root (HKCR, or HKCU\Software\Classes). DllRegisterServer and MsgForm.exe /RegServer
// write exactly these values (RegistrationWriter.h); the installer packages carry them as their own
// Registry rows, generated from this same list (packaging/). Plain C++ without <windows.h>, so that the
// generator builds on the build machine.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace rx9400::registration {

/// One creatable class: the default value of its keys, its identity and its ProgIDs.
struct ComClass {
  std::string_view description;
  std::string_view classId;
  std::string_view progId;           ///< version-independent
  std::string_view versionedProgId;  ///< empty when the class has the one ProgID
};

/// One interface of a type library and the marshaler that carries it between apartments.
struct ComInterface {
  enum class Kind { Dual, DispatchOnly };
  std::string_view name;
  std::string_view interfaceId;
  Kind kind;
};

/// A file that serves classes: in process (a DLL) or as a local server (an EXE), with its type library.
struct ComServer {
  enum class Kind { InProcess, LocalServer };
  Kind kind;
  std::string_view fileName;
  std::string_view libraryId;
  std::string_view libraryVersion;
  std::string_view libraryDescription;
  std::span<const ComClass> classes;
  std::span<const ComInterface> interfaces;
};

inline constexpr ComClass kPluginClasses[] = {
    {"CRX9400Query", "{2698AA60-0074-4433-8872-D732BB30FF3C}", "TamsaRX9400VTI.CRX9400Query", ""},
    {"CRX9400VTI", "{06F62405-21B1-420D-8AE8-952DBA323392}", "TamsaRX9400VTI.CRX9400VTI", ""},
    {"CStoreDetectorType", "{0171179B-7E56-45E0-9610-FB38E7FB7344}", "TamsaRX9400VTI.CStoreDetectorType", ""},
};
inline constexpr ComInterface kPluginInterfaces[] = {
    {"_CRX9400Query", "{0BB84A15-5B65-4374-B99D-9C2713341B46}", ComInterface::Kind::Dual},
    {"_CRX9400VTI", "{01AFA9E9-A1AD-4F37-8993-118769810C17}", ComInterface::Kind::Dual},
    {"_CStoreDetectorType", "{920EBF7B-3F08-4766-B2B8-3DBD7F7A6AA6}", ComInterface::Kind::Dual},
    {"__CRX9400VTI", "{BC30B334-74A3-4E3A-9776-1050324ED6AB}", ComInterface::Kind::DispatchOnly},
};
/// The plug-in (src/win/TamsaRX9400VTI.idl), in process with the apartment threading model.
inline constexpr ComServer kPlugin{ComServer::Kind::InProcess,
                                   "TamsaRX9400VTI.dll",
                                   "{B031DC0D-2650-472B-B309-581B20E3D309}",
                                   "1.0",
                                   "Tamsa RX9400 instrument plug-in",
                                   kPluginClasses,
                                   kPluginInterfaces};

inline constexpr ComClass kMsgFormClasses[] = {
    {"MsgForm message form", "{83ECE61B-4A38-4BBA-8634-C7320F4E77B5}", "MsgForm.MessageForm",
     "MsgForm.MessageForm.1"},
};
inline constexpr ComInterface kMsgFormInterfaces[] = {
    {"IMessageForm", "{6170F902-8807-450E-B94A-2DB809B551D0}", ComInterface::Kind::Dual},
    {"_IMessageFormEvents", "{2ED51C9F-804A-4ACE-A59A-603661D61087}", ComInterface::Kind::DispatchOnly},
};
/// The message form server (tools/msgform/MsgForm.idl), a local server.
inline constexpr ComServer kMsgForm{ComServer::Kind::LocalServer,
                                    "MsgForm.exe",
                                    "{49867288-7C67-44EE-92DB-5BA3F1EB38CD}",
                                    "1.0",
                                    "MsgForm message form",
                                    kMsgFormClasses,
                                    kMsgFormInterfaces};

/// The type library marshaler (dual and automation interfaces) and the dispatch marshaler.
inline constexpr std::string_view kTypeLibraryMarshaler = "{00020424-0000-0000-C000-000000000046}";
inline constexpr std::string_view kDispatchMarshaler = "{00020420-0000-0000-C000-000000000046}";

/// Which registry view the file belongs to: the type library's path is filed under win32 or win64.
enum class Bitness { Bits32, Bits64 };

/// One string value below the classes root. An empty `name` is the key's default value. A value that
/// is the server file's full path (in quotes for a local server's command line) has no `text`: the
/// writer puts in the path where it writes.
struct Value {
  enum class Data { Text, Path, QuotedPath };
  std::string key;
  std::string name;
  std::string text;
  Data data = Data::Text;
};

/// Every value a registration of `server` writes, parents before children.
inline std::vector<Value> values(const ComServer& server, Bitness bitness) {
  using Data = Value::Data;
  const auto s = [](std::string_view text) { return std::string(text); };
  const std::string library = s(server.libraryId), version = s(server.libraryVersion);
  std::vector<Value> out;
  for (const ComClass& entry : server.classes) {
    const std::string key = "CLSID\\" + s(entry.classId), progId = s(entry.progId);
    const std::string versioned = entry.versionedProgId.empty() ? progId : s(entry.versionedProgId);
    out.push_back({key, "", s(entry.description)});
    if (server.kind == ComServer::Kind::InProcess) {
      out.push_back({key + "\\InprocServer32", "", "", Data::Path});
      out.push_back({key + "\\InprocServer32", "ThreadingModel", "Apartment"});
    } else {
      out.push_back({key + "\\LocalServer32", "", "", Data::QuotedPath});
    }
    out.push_back({key + "\\ProgID", "", versioned});
    out.push_back({key + "\\VersionIndependentProgID", "", progId});
    out.push_back({key + "\\TypeLib", "", library});
    out.push_back({key + "\\Version", "", version});
    out.push_back({key + "\\Programmable", "", ""});
    out.push_back({progId, "", s(entry.description)});
    out.push_back({progId + "\\CLSID", "", s(entry.classId)});
    if (versioned != progId) {
      out.push_back({progId + "\\CurVer", "", versioned});
      out.push_back({versioned, "", s(entry.description)});
      out.push_back({versioned + "\\CLSID", "", s(entry.classId)});
    }
  }
  const std::string libraryKey = "TypeLib\\" + library + "\\" + version;
  out.push_back({libraryKey, "", s(server.libraryDescription)});
  out.push_back({libraryKey + "\\FLAGS", "", "0"});
  out.push_back(
      {libraryKey + (bitness == Bitness::Bits64 ? "\\0\\win64" : "\\0\\win32"), "", "", Data::Path});
  for (const ComInterface& entry : server.interfaces) {
    const std::string key = "Interface\\" + s(entry.interfaceId);
    const std::string marshaler =
        s(entry.kind == ComInterface::Kind::Dual ? kTypeLibraryMarshaler : kDispatchMarshaler);
    out.push_back({key, "", s(entry.name)});
    out.push_back({key + "\\ProxyStubClsid", "", marshaler});
    out.push_back({key + "\\ProxyStubClsid32", "", marshaler});
    out.push_back({key + "\\TypeLib", "", library});
    out.push_back({key + "\\TypeLib", "Version", version});
  }
  return out;
}

/// The keys a registration of `server` owns whole: unregistration deletes each with everything below it.
inline std::vector<std::string> ownedKeys(const ComServer& server) {
  std::vector<std::string> out;
  for (const ComClass& entry : server.classes) {
    out.push_back("CLSID\\" + std::string(entry.classId));
    out.push_back(std::string(entry.progId));
    if (!entry.versionedProgId.empty()) out.push_back(std::string(entry.versionedProgId));
  }
  out.push_back("TypeLib\\" + std::string(server.libraryId));
  for (const ComInterface& entry : server.interfaces)
    out.push_back("Interface\\" + std::string(entry.interfaceId));
  return out;
}

}  // namespace rx9400::registration
