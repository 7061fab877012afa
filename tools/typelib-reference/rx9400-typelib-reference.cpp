// rx9400-typelib-reference: writes the automation reference of type libraries as Markdown, read from the
// built files through ITypeLib/ITypeInfo (the plug-in's DLL and MsgForm.exe carry theirs as resource 1),
// and names every class, interface, member and argument that lacks a help string.
//
//   rx9400-typelib-reference [--output FILE.md] LIBRARY...
//
// A help string is one line: what the member does and returns, then each argument as "; name: meaning".
// The exit status is 1 when any help string or argument meaning is missing, 2 when a library cannot be
// read or the file cannot be written, 0 otherwise.
#include <windows.h>
// After windows.h, which it needs.
#include <oleauto.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "Text.h"

namespace {

std::string utf8(const wchar_t* text) {
  return text == nullptr ? std::string() : rx9400::tools::narrow(text);
}

/// Owns a BSTR for the length of a scope.
struct Bstr {
  BSTR value = nullptr;
  ~Bstr() { SysFreeString(value); }
  std::string text() const { return utf8(value); }
};

template <typename T>
struct Released {
  T* value = nullptr;
  ~Released() {
    if (value != nullptr) value->Release();
  }
  T* operator->() const { return value; }
};

std::string guidText(const GUID& guid) {
  wchar_t text[40] = {};
  StringFromGUID2(guid, text, 40);
  return utf8(text);
}

/// A help string as a sentence of the reference.
std::string sentence(const std::string& help) {
  if (help.empty()) return "(no help string)";
  return help.back() == '.' ? help : help + ".";
}

std::string baseName(const std::string& path) {
  const std::size_t slash = path.find_last_of("\\/");
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

/// A parameter or result type as a script's Basic names it.
std::string typeName(ITypeInfo* info, const TYPEDESC& type) {
  switch (type.vt) {
    case VT_PTR:
      return typeName(info, *type.lptdesc);
    case VT_SAFEARRAY:
      return typeName(info, *type.lptdesc) + "()";
    case VT_I1:
    case VT_UI1:
      return "Byte";
    case VT_I2:
    case VT_UI2:
      return "Integer";
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
      return "Long";
    case VT_R4:
      return "Single";
    case VT_R8:
      return "Double";
    case VT_CY:
      return "Currency";
    case VT_DATE:
      return "Date";
    case VT_BSTR:
      return "String";
    case VT_BOOL:
      return "Boolean";
    case VT_VARIANT:
      return "Variant";
    case VT_DISPATCH:
    case VT_UNKNOWN:
      return "Object";
    case VT_USERDEFINED: {
      Released<ITypeInfo> referenced;
      Bstr name;
      if (SUCCEEDED(info->GetRefTypeInfo(type.hreftype, &referenced.value)))
        referenced->GetDocumentation(MEMBERID_NIL, &name.value, nullptr, nullptr, nullptr);
      return name.text().empty() ? "Object" : name.text();
    }
    default:
      return "Variant";
  }
}

std::string defaultValueText(const PARAMDESC& desc) {
  if (!(desc.wParamFlags & PARAMFLAG_FHASDEFAULT) || desc.pparamdescex == nullptr) return {};
  VARIANT text;
  VariantInit(&text);
  std::string result;
  if (SUCCEEDED(
          VariantChangeTypeEx(&text, &desc.pparamdescex->varDefaultValue, LOCALE_INVARIANT, 0, VT_BSTR)))
    result = utf8(text.bstrVal);
  VariantClear(&text);
  return result;
}

/// One argument as a script passes it.
struct Argument {
  std::string name, type, defaultValue, meaning;
  bool byReference = false, optional = false;
};

/// One member of an interface or event set, with everything the reference shows.
struct Member {
  MEMBERID id = 0;
  INVOKEKIND kind = INVOKE_FUNC;
  std::string name, help, summary, resultType;
  std::vector<Argument> arguments;
};

/// The meaning of each argument in a help string ("...; name: meaning; other: meaning"); what stands
/// before the first argument is the member's summary.
void splitHelp(Member& member) {
  std::size_t summaryEnd = member.help.size();
  std::vector<std::size_t> starts;
  for (Argument& argument : member.arguments) {
    const std::string marker = argument.name + ": ";
    std::size_t at = member.help.find("; " + marker);
    if (at != std::string::npos) {
      at += 2;
    } else if (member.help.compare(0, marker.size(), marker) == 0) {
      at = 0;
    }
    starts.push_back(at);
    if (at != std::string::npos) summaryEnd = std::min(summaryEnd, at == 0 ? 0 : at - 2);
  }
  member.summary = member.help.substr(0, summaryEnd);
  for (std::size_t i = 0; i < member.arguments.size(); ++i) {
    if (starts[i] == std::string::npos) continue;
    std::size_t end = member.help.size();
    for (std::size_t other : starts) {
      if (other != std::string::npos && other > starts[i]) end = std::min(end, other - 2);
    }
    const std::size_t begin = starts[i] + member.arguments[i].name.size() + 2;
    member.arguments[i].meaning = member.help.substr(begin, end - begin);
  }
}

std::vector<Member> membersOf(ITypeInfo* info, const TYPEATTR& attributes) {
  std::vector<Member> members;
  for (UINT index = 0; index < attributes.cFuncs; ++index) {
    FUNCDESC* function = nullptr;
    if (FAILED(info->GetFuncDesc(index, &function))) continue;
    const bool inherited = function->memid >= 0x60000000 && function->memid < 0x60020000;
    if (!inherited && !(function->wFuncFlags & FUNCFLAG_FRESTRICTED)) {
      Member member;
      member.id = function->memid;
      member.kind = function->invkind;
      Bstr name, help;
      info->GetDocumentation(function->memid, &name.value, &help.value, nullptr, nullptr);
      member.name = name.text();
      member.help = help.text();
      std::vector<BSTR> names(static_cast<std::size_t>(function->cParams) + 1, nullptr);
      UINT count = 0;
      info->GetNames(function->memid, names.data(), static_cast<UINT>(names.size()), &count);
      for (SHORT i = 0; i < function->cParams; ++i) {
        const ELEMDESC& element = function->lprgelemdescParam[i];
        const USHORT flags = element.paramdesc.wParamFlags;
        if (flags & PARAMFLAG_FLCID) continue;
        if (flags & PARAMFLAG_FRETVAL) {
          member.resultType = typeName(info, element.tdesc);
          continue;
        }
        Argument argument;
        argument.name = static_cast<UINT>(i) + 1 < count ? utf8(names[static_cast<std::size_t>(i) + 1]) : "";
        if (argument.name.empty()) argument.name = "value";
        argument.type = typeName(info, element.tdesc);
        argument.byReference = element.tdesc.vt == VT_PTR;
        argument.optional = (flags & PARAMFLAG_FOPT) != 0;
        argument.defaultValue = defaultValueText(element.paramdesc);
        member.arguments.push_back(argument);
      }
      for (BSTR each : names) SysFreeString(each);
      if (member.kind == INVOKE_PROPERTYGET && member.resultType.empty() &&
          function->elemdescFunc.tdesc.vt != VT_HRESULT)
        member.resultType = typeName(info, function->elemdescFunc.tdesc);
      if (member.kind == INVOKE_FUNC && member.resultType.empty() &&
          function->elemdescFunc.tdesc.vt != VT_HRESULT && function->elemdescFunc.tdesc.vt != VT_VOID)
        member.resultType = typeName(info, function->elemdescFunc.tdesc);
      splitHelp(member);
      members.push_back(member);
    }
    info->ReleaseFuncDesc(function);
  }
  return members;
}

/// The declaration a script's Basic would give the member.
std::string declaration(const Member& member, bool event) {
  std::string arguments;
  for (const Argument& argument : member.arguments) {
    if (!arguments.empty()) arguments += ", ";
    if (argument.optional) arguments += "Optional ";
    if (argument.byReference) arguments += "ByRef ";
    std::string type = argument.type;
    std::string name = argument.name;
    if (type.size() > 2 && type.compare(type.size() - 2, 2, "()") == 0) {
      name += "()";
      type.resize(type.size() - 2);
    }
    arguments += name + " As " + type;
    if (!argument.defaultValue.empty()) arguments += " = " + argument.defaultValue;
  }
  const std::string list = arguments.empty() ? "" : "(" + arguments + ")";
  if (event) return "Event " + member.name + list;
  switch (member.kind) {
    case INVOKE_PROPERTYGET:
      return "Property Get " + member.name + list + " As " + member.resultType;
    case INVOKE_PROPERTYPUT:
      return "Property Let " + member.name + list;
    case INVOKE_PROPERTYPUTREF:
      return "Property Set " + member.name + list;
    default:
      return member.resultType.empty() ? "Sub " + member.name + list
                                       : "Function " + member.name + list + " As " + member.resultType;
  }
}

/// The help strings a reader would miss, as "Library.Type.Member" lines.
struct Report {
  std::vector<std::string> missing;
  void need(const std::string& help, const std::string& where) {
    if (help.empty()) missing.push_back(where + ": no help string");
  }
};

/// A property put's one argument is the property's value, which the property's help describes.
bool describedByMember(const Member& member) {
  return (member.kind == INVOKE_PROPERTYPUT || member.kind == INVOKE_PROPERTYPUTREF) &&
         member.arguments.size() == 1;
}

/// The anchor a Markdown renderer gives a member's heading: its name in lower case, a repeated name
/// numbered from 1 in the order of the page.
std::string anchorOf(const std::string& name) {
  static std::map<std::string, int> seen;
  std::string anchor;
  for (char c : name) anchor += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  const int repeat = seen[anchor]++;
  return repeat == 0 ? anchor : anchor + "-" + std::to_string(repeat);
}

/// A line of links to the members, in DISPID order, to find one by name.
void writeIndex(std::string& out, const std::vector<Member>& members, bool event) {
  std::string line;
  for (const Member& member : members)
    line +=
        (line.empty() ? "" : ", ") + std::string("[`") + member.name + "`](#" + anchorOf(member.name) + ")";
  if (!line.empty()) out += (event ? "Events: " : "Members: ") + line + ".\n\n";
}

void writeMembers(std::string& out, const std::vector<Member>& members, bool event, const std::string& where,
                  Report& report) {
  for (const Member& member : members) {
    report.need(member.help, where + "." + member.name);
    char id[16];
    std::snprintf(id, sizeof(id), "%ld", static_cast<long>(member.id));
    out += "#### `" + member.name + "`\n\n";
    out += "DISPID " + std::string(id) + "\n\n";
    out += "    " + declaration(member, event) + "\n\n";
    out += sentence(member.summary) + "\n\n";
    if (member.arguments.empty() || describedByMember(member)) continue;
    out += "| Argument | Type | Meaning |\n|---|---|---|\n";
    for (const Argument& argument : member.arguments) {
      std::string type = argument.type;
      if (argument.byReference) type += ", by reference";
      if (argument.optional) type += ", optional";
      if (!argument.defaultValue.empty()) type += ", default " + argument.defaultValue;
      out += "| `" + argument.name + "` | " + type + " | " + argument.meaning + " |\n";
      if (argument.meaning.empty())
        report.missing.push_back(where + "." + member.name + "(" + argument.name +
                                 "): no meaning in the help string");
    }
    out += "\n";
  }
}

/// An interface or event set with its members; dual interfaces are read through their vtable view, whose
/// members carry the script's result types.
void writeInterface(std::string& out, ITypeInfo* info, const std::string& library, Report& report) {
  Released<ITypeInfo> vtableView;
  TYPEATTR* attributes = nullptr;
  if (FAILED(info->GetTypeAttr(&attributes))) return;
  const bool dual = attributes->typekind == TKIND_DISPATCH && (attributes->wTypeFlags & TYPEFLAG_FDUAL);
  const bool event = attributes->typekind == TKIND_DISPATCH && !dual;
  const GUID iid = attributes->guid;
  info->ReleaseTypeAttr(attributes);
  ITypeInfo* source = info;
  HREFTYPE vtable = 0;
  if (dual && SUCCEEDED(info->GetRefTypeOfImplType(static_cast<UINT>(-1), &vtable)) &&
      SUCCEEDED(info->GetRefTypeInfo(vtable, &vtableView.value)))
    source = vtableView.value;
  Bstr name, help;
  info->GetDocumentation(MEMBERID_NIL, &name.value, &help.value, nullptr, nullptr);
  report.need(help.text(), library + "." + name.text());
  out += "### " + std::string(event ? "Events" : "Interface") + " `" + name.text() + "`\n\n";
  out += sentence(help.text()) + "\n\nIID `" + guidText(iid) + "`\n\n";
  if (FAILED(source->GetTypeAttr(&attributes))) return;
  const std::vector<Member> members = membersOf(source, *attributes);
  source->ReleaseTypeAttr(attributes);
  if (members.empty()) out += "No members.\n\n";
  writeIndex(out, members, event);
  writeMembers(out, members, event, library + "." + name.text(), report);
}

bool writeLibrary(std::string& out, const std::string& path, Report& report) {
  Released<ITypeLib> library;
  if (FAILED(LoadTypeLibEx(rx9400::tools::widen(path, CP_ACP).c_str(), REGKIND_NONE, &library.value))) {
    std::fprintf(stderr, "cannot read a type library from %s\n", path.c_str());
    return false;
  }
  Bstr name, help;
  library->GetDocumentation(-1, &name.value, &help.value, nullptr, nullptr);
  TLIBATTR* attributes = nullptr;
  library->GetLibAttr(&attributes);
  char version[32];
  std::snprintf(version, sizeof(version), "%u.%u", attributes->wMajorVerNum, attributes->wMinorVerNum);
  out += "## Type library `" + name.text() + "` (" + baseName(path) + ")\n\n";
  out += sentence(help.text()) + " Version " + version + ", LIBID `" + guidText(attributes->guid) + "`.\n\n";
  report.need(help.text(), name.text());
  library->ReleaseTLibAttr(attributes);

  // Each class, then the interfaces and events it carries, each under the first class that names it.
  std::vector<GUID> written;
  const UINT count = library->GetTypeInfoCount();
  for (UINT index = 0; index < count; ++index) {
    Released<ITypeInfo> info;
    TYPEATTR* classAttributes = nullptr;
    if (FAILED(library->GetTypeInfo(index, &info.value)) || FAILED(info->GetTypeAttr(&classAttributes)))
      continue;
    if (classAttributes->typekind != TKIND_COCLASS) {
      info->ReleaseTypeAttr(classAttributes);
      continue;
    }
    Bstr className, classHelp;
    info->GetDocumentation(MEMBERID_NIL, &className.value, &classHelp.value, nullptr, nullptr);
    report.need(classHelp.text(), name.text() + "." + className.text());
    out += "## Class `" + className.text() + "`\n\n";
    out += sentence(classHelp.text()) + "\n\n";
    out += "- ProgID: `" + name.text() + "." + className.text() + "`\n";
    out += "- CLSID: `" + guidText(classAttributes->guid) + "`\n";
    std::vector<Released<ITypeInfo>> carried(classAttributes->cImplTypes);
    for (UINT i = 0; i < classAttributes->cImplTypes; ++i) {
      HREFTYPE reference = 0;
      INT flags = 0;
      Bstr interfaceName;
      if (FAILED(info->GetRefTypeOfImplType(i, &reference)) ||
          FAILED(info->GetRefTypeInfo(reference, &carried[i].value)))
        continue;
      info->GetImplTypeFlags(i, &flags);
      carried[i]->GetDocumentation(MEMBERID_NIL, &interfaceName.value, nullptr, nullptr, nullptr);
      out += std::string((flags & IMPLTYPEFLAG_FSOURCE) ? "- Events: `" : "- Interface: `") +
             interfaceName.text() + "`" + ((flags & IMPLTYPEFLAG_FDEFAULT) ? " (default)" : "") + "\n";
    }
    out += "\n";
    info->ReleaseTypeAttr(classAttributes);
    for (Released<ITypeInfo>& each : carried) {
      TYPEATTR* interfaceAttributes = nullptr;
      if (each.value == nullptr || FAILED(each->GetTypeAttr(&interfaceAttributes))) continue;
      const GUID iid = interfaceAttributes->guid;
      each->ReleaseTypeAttr(interfaceAttributes);
      bool seen = false;
      for (const GUID& other : written) seen = seen || IsEqualGUID(other, iid);
      if (seen) continue;
      written.push_back(iid);
      writeInterface(out, each.value, name.text(), report);
    }
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::string output;
  std::vector<std::string> libraries;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--output") == 0 && i + 1 < argc) {
      output = argv[++i];
    } else {
      libraries.push_back(argv[i]);
    }
  }
  if (libraries.empty()) {
    std::fprintf(stderr, "usage: rx9400-typelib-reference [--output FILE.md] LIBRARY...\n");
    return 2;
  }
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  std::string out =
      "# Automation reference\n\n"
      "Generated from the built type libraries by `tools/typelib-reference` (`tests/e2e/reference/run.sh`;\n"
      "`RX9400_UPDATE_DOCS=1` writes it anew): do not edit it by hand, edit the help strings of the IDL.\n"
      "The order in which a test step calls these members, and which boxes and dialogs a person sees, are "
      "in\n"
      "[test-step.md](test-step.md); procedures that run are in [samples/](../samples/)\n"
      "([samples/README.md](../samples/README.md)).\n\n"
      "Each member shows its DISPID, its declaration as a script's Basic would give it, what it does, and "
      "the\n"
      "meaning and units of each argument. A script passes every argument as a Variant; the types say what\n"
      "each becomes. The ProgID of a class is the library's name, a point and the class's name.\n\n";
  Report report;
  int status = 0;
  for (const std::string& path : libraries) {
    if (!writeLibrary(out, path, report)) status = 2;
  }
  if (!output.empty()) {
    FILE* file = std::fopen(output.c_str(), "wb");
    if (file == nullptr || std::fwrite(out.data(), 1, out.size(), file) != out.size()) {
      std::fprintf(stderr, "cannot write %s\n", output.c_str());
      status = 2;
    }
    if (file != nullptr) std::fclose(file);
  }
  for (const std::string& line : report.missing) std::printf("missing help: %s\n", line.c_str());
  std::printf("%zu help strings missing\n", report.missing.size());
  CoUninitialize();
  if (status == 0 && !report.missing.empty()) status = 1;
  return status;
}
