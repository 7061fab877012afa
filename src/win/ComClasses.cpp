// The three creatable classes: thin COM shells over the portable query session and instrument.
// Every member runs its body inside one error trap, holding its object (DispatchObject's
// trapped/trappedResult).
#include "win/ComClasses.h"

#include <new>

#include "core/PluginContext.h"
#include "instrument/Instrument.h"
#include "session/QuerySession.h"
#include "win/ConnectionPoint.h"
#include "win/DispatchObject.h"
#include "win/EventSource.h"
#include "win/TamsaRX9400VTI_h.h"
#include "win/Win32Language.h"
#include "win/Win32NoticeBoxes.h"
#include "win/Win32Platform.h"
#include "win/dialogs/Win32Dialogs.h"

namespace rx9400::win {
namespace {

/// The process's one context, made on first use (creating a class talks to no detector and opens no
/// window: the services start lazily too).
PluginContext& pluginContext() {
  static ExecutiveLanguage language;
  static Win32TraceSink traceSink;
  static Win32Registry registry;
  static Win32WindowSystem windows;
  static Win32DatePickerControl datePicker;
  static Win32Sound sound;
  static Win32MessageBoxes messageBoxes;
  static Win32EventPump eventPump;
  static Win32Dialogs dialogs;
  static Win32Clock clock;
  static Win32Locale locale;
  static Win32NoticeBoxes noticeBoxes;
  static PluginContext context(
      MBdllFunctions::forInstalledLibrary(),
      PlatformServices{language, traceSink, registry, windows, datePicker, sound, messageBoxes, eventPump,
                       dialogs, clock, locale, noticeBoxes, systemSharedMemory()});
  static const bool reporting = [] {
    setFailureReporter([](const char* member, const char* what) {
      pluginContext().trace.trace({"$" + std::string(member) + "$ - Error :: " + what});
    });
    return true;
  }();
  (void)reporting;
  return context;
}

/// A Variant result from a portable value: empty, a Long, a String or an array of Variants holding
/// Strings.
HRESULT toVariant(const AutomationValue& value, VARIANT* result) {
  VariantInit(result);
  if (const auto* number = std::get_if<std::int32_t>(&value)) {
    V_VT(result) = VT_I4;
    V_I4(result) = *number;
  } else if (const auto* text = std::get_if<std::string>(&value)) {
    V_VT(result) = VT_BSTR;
    V_BSTR(result) = toBstr(*text);
  } else if (const auto* list = std::get_if<ScriptList>(&value)) {
    const std::vector<std::string>& texts = list->texts;
    SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(texts.size()));
    if (array == nullptr) return E_OUTOFMEMORY;
    for (LONG i = 0; i < static_cast<LONG>(texts.size()); ++i) {
      VARIANT element;
      VariantInit(&element);
      V_VT(&element) = VT_BSTR;
      V_BSTR(&element) = toBstr(texts[static_cast<std::size_t>(i)]);
      SafeArrayPutElement(array, &i, &element);
      VariantClear(&element);
    }
    V_VT(result) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(result) = array;
  }
  return S_OK;
}

class QueryObject final : public DispatchObject<_CRX9400Query> {
 public:
  QueryObject() : DispatchObject(IID__CRX9400Query, CLSID_CRX9400Query, nullptr), session_(pluginContext()) {}

  STDMETHODIMP RegisterApp() override {
    return trapped("RegisterApp", [&] { session_.RegisterApp(); });
  }
  STDMETHODIMP CloseApp() override {
    return trapped("CloseApp", [&] { session_.CloseApp(); });
  }
  STDMETHODIMP ScanAndConnectToDetector() override {
    return trapped("ScanAndConnectToDetector", [&] { session_.ScanAndConnectToDetector(); });
  }
  STDMETHODIMP IsDetectorConnected(VARIANT_BOOL* result) override {
    return trappedResult<VARIANT_BOOL>("IsDetectorConnected", result, VARIANT_FALSE,
                                       [&] { *result = toVariantBool(session_.IsDetectorConnected()); });
  }
  STDMETHODIMP SendDetectorType(LONG mednDetector) override {
    return trapped("SendDetectorType", [&] { session_.SendDetectorType(mednDetector); });
  }
  STDMETHODIMP ResetTheDetectors() override {
    return trapped("ResetTheDetectors", [&] { session_.ResetTheDetectors(); });
  }

 private:
  QuerySession session_;
};

class InstrumentObject final : public DispatchObject<_CRX9400VTI>, public IConnectionPointContainer {
 public:
  InstrumentObject()
      : DispatchObject(IID__CRX9400VTI, CLSID_CRX9400VTI, &DIID___CRX9400VTI),
        connectionPoint_(*static_cast<_CRX9400VTI*>(this), DIID___CRX9400VTI),
        events_(connectionPoint_),
        instrument_(pluginContext(), events_) {}

  // IUnknown, shared by every interface of the object.
  STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
    return DispatchObject::QueryInterface(iid, out);
  }
  STDMETHODIMP_(ULONG) AddRef() override { return DispatchObject::AddRef(); }
  STDMETHODIMP_(ULONG) Release() override { return DispatchObject::Release(); }

  // IConnectionPointContainer
  STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** points) override {
    return connectionPoint_.enumerate(points);
  }
  STDMETHODIMP FindConnectionPoint(REFIID iid, IConnectionPoint** point) override {
    return connectionPoint_.find(iid, point);
  }

  // Properties and settings.
  STDMETHODIMP get_pChargingStatus(VARIANT_BOOL* result) override {
    return trappedResult<VARIANT_BOOL>("pChargingStatus", result, VARIANT_FALSE,
                                       [&] { *result = toVariantBool(instrument_.pChargingStatus()); });
  }
  STDMETHODIMP get_pPercentageCharge(unsigned char* result) override {
    return trappedResult<unsigned char>("pPercentageCharge", result, 0,
                                        [&] { *result = instrument_.pPercentageCharge(); });
  }
  STDMETHODIMP get_pResolution(float* result) override {
    return trappedResult<float>("pResolution", result, 0.0f, [&] { *result = instrument_.pResolution(); });
  }
  STDMETHODIMP put_pCurrentMode(BSTR value) override {
    return trapped("pCurrentMode", [&] { instrument_.pCurrentMode(fromBstr(value)); });
  }
  STDMETHODIMP put_pCurrentSettings(BSTR value) override {
    return trapped("pCurrentSettings", [&] { instrument_.pCurrentSettings(fromBstr(value)); });
  }
  STDMETHODIMP get_pGetExposureTime(double* result) override {
    return trappedResult<double>("pGetExposureTime", result, 0.0,
                                 [&] { *result = instrument_.pGetExposureTime(); });
  }
  STDMETHODIMP get_pGetExposurekVp(double* result) override {
    return trappedResult<double>("pGetExposurekVp", result, 0.0,
                                 [&] { *result = instrument_.pGetExposurekVp(); });
  }
  STDMETHODIMP InitTimer() override {
    return trapped("InitTimer", [&] { instrument_.InitTimer(); });
  }
  STDMETHODIMP CheckDetectorPowerStatus(LONG lSystemSleepTime, LONG lSystemShutDownTime,
                                        VARIANT_BOOL* result) override {
    return trappedResult<VARIANT_BOOL>("CheckDetectorPowerStatus", result, VARIANT_FALSE, [&] {
      *result = toVariantBool(instrument_.CheckDetectorPowerStatus(lSystemSleepTime, lSystemShutDownTime));
    });
  }
  STDMETHODIMP GetWaveformInSecs(float rMin, float rMax, LONG ldataPoints, LONG lValue,
                                 BSTR* result) override {
    return textResult("GetWaveformInSecs", result,
                      [&] { return instrument_.GetWaveformInSecs(rMin, rMax, ldataPoints, lValue); });
  }
  STDMETHODIMP CheckDataStatus(VARIANT_BOOL* result) override {
    return trappedResult<VARIANT_BOOL>("CheckDataStatus", result, VARIANT_FALSE,
                                       [&] { *result = toVariantBool(instrument_.CheckDataStatus()); });
  }
  STDMETHODIMP DetectorWakeUp() override {
    return trapped("DetectorWakeUp", [&] { instrument_.DetectorWakeUp(); });
  }
  STDMETHODIMP EnableMeasurements(VARIANT_BOOL fVal) override {
    return trapped("EnableMeasurements", [&] { instrument_.EnableMeasurements(fromVariantBool(fVal)); });
  }
  STDMETHODIMP GetNumberOfTargetFilters(unsigned char* result) override {
    return trappedResult<unsigned char>("GetNumberOfTargetFilters", result, 0,
                                        [&] { *result = instrument_.GetNumberOfTargetFilters(); });
  }
  STDMETHODIMP GetValidTargetFilters(SAFEARRAY** sValidTargetFilters,
                                     unsigned char bNoOfTargetFilter) override {
    return trapped("GetValidTargetFilters", [&] {
      if (sValidTargetFilters == nullptr) return;
      std::vector<std::string> names = readStrings(*sValidTargetFilters);
      instrument_.GetValidTargetFilters(names, bNoOfTargetFilter);
      writeStrings(*sValidTargetFilters, names);
    });
  }
  STDMETHODIMP GetDefaultTargetFilterName(BSTR* result) override {
    return textResult("GetDefaultTargetFilterName", result,
                      [&] { return instrument_.GetDefaultTargetFilterName(); });
  }
  STDMETHODIMP UpdateDefaultTargetFilterInSettings() override {
    return trapped("UpdateDefaultTargetFilterInSettings",
                   [&] { instrument_.UpdateDefaultTargetFilterInSettings(); });
  }
  STDMETHODIMP ChangeAllsettings() override {
    return trapped("ChangeAllsettings", [&] { instrument_.ChangeAllsettings(); });
  }
  STDMETHODIMP ChangeDetectorSetup() override {
    return trapped("ChangeDetectorSetup", [&] { instrument_.ChangeDetectorSetup(); });
  }
  STDMETHODIMP ChangeDetectorMode() override {
    return trapped("ChangeDetectorMode", [&] { instrument_.ChangeDetectorMode(); });
  }
  STDMETHODIMP ChangeSettings() override {
    return trapped("ChangeSettings", [&] { instrument_.ChangeSettings(); });
  }
  STDMETHODIMP put_pDoseUnits(unsigned char value) override {
    return trapped("pDoseUnits", [&] { instrument_.pDoseUnits(value); });
  }
  STDMETHODIMP put_pDoseRateUnits(unsigned char value) override {
    return trapped("pDoseRateUnits", [&] { instrument_.pDoseRateUnits(value); });
  }
  STDMETHODIMP put_pFluoroType(unsigned char value) override {
    return trapped("pFluoroType", [&] { instrument_.pFluoroType(value); });
  }
  STDMETHODIMP put_pTimeUnit(unsigned char value) override {
    return trapped("pTimeUnit", [&] { instrument_.pTimeUnit(value); });
  }
  STDMETHODIMP put_pPercentKV(unsigned char value) override {
    return trapped("pPercentKV", [&] { instrument_.pPercentKV(value); });
  }
  STDMETHODIMP put_pDelay(short value) override {
    return trapped("pDelay", [&] { instrument_.pDelay(value); });
  }
  STDMETHODIMP put_pIncludeDelay(VARIANT_BOOL value) override {
    return trapped("pIncludeDelay", [&] { instrument_.pIncludeDelay(fromVariantBool(value)); });
  }
  STDMETHODIMP put_pTargetFilter(BSTR* value) override {
    return trapped("pTargetFilter", [&] {
      std::string text = value != nullptr ? fromBstr(*value) : std::string();
      instrument_.pTargetFilter(text);
    });
  }
  STDMETHODIMP get_pSerialNumber(BSTR* result) override {
    return textResult("pSerialNumber", result, [&] { return instrument_.pSerialNumber(); });
  }
  STDMETHODIMP get_pFirmWareVersion(BSTR* result) override {
    return textResult("pFirmWareVersion", result, [&] { return instrument_.pFirmWareVersion(); });
  }
  STDMETHODIMP IsDetectorConnected(VARIANT_BOOL* result) override {
    return trappedResult<VARIANT_BOOL>("IsDetectorConnected", result, VARIANT_FALSE,
                                       [&] { *result = toVariantBool(instrument_.IsDetectorConnected()); });
  }
  STDMETHODIMP GetWaveformInMilliSec(float rMin, float rMax, LONG ldataPoints, BSTR* result) override {
    return textResult("GetWaveformInMilliSec", result,
                      [&] { return instrument_.GetWaveformInMilliSec(rMin, rMax, ldataPoints); });
  }
  STDMETHODIMP get_pMeasurementStatus(VARIANT_BOOL* result) override {
    return trappedResult<VARIANT_BOOL>("pMeasurementStatus", result, VARIANT_FALSE,
                                       [&] { *result = toVariantBool(instrument_.pMeasurementStatus()); });
  }
  STDMETHODIMP CheckDetectorStatus(VARIANT_BOOL* result) override {
    return trappedResult<VARIANT_BOOL>("CheckDetectorStatus", result, VARIANT_FALSE,
                                       [&] { *result = toVariantBool(instrument_.CheckDetectorStatus()); });
  }
  STDMETHODIMP Val_OS(BSTR sValue, double* result) override {
    return trappedResult<double>("Val_OS", result, 0.0,
                                 [&] { *result = instrument_.Val_OS(fromBstr(sValue)); });
  }
  STDMETHODIMP CheckConnectionStatus(VARIANT_BOOL* result) override {
    return trappedResult<VARIANT_BOOL>("CheckConnectionStatus", result, VARIANT_FALSE,
                                       [&] { *result = toVariantBool(instrument_.CheckConnectionStatus()); });
  }
  STDMETHODIMP CloseWindow() override {
    return trapped("CloseWindow", [&] { instrument_.CloseWindow(); });
  }
  STDMETHODIMP CheckSleepStatus() override {
    return trapped("CheckSleepStatus", [&] { instrument_.CheckSleepStatus(); });
  }
  STDMETHODIMP GetDetectorType(BSTR* result) override {
    return textResult("GetDetectorType", result, [&] { return instrument_.GetDetectorType(); });
  }
  STDMETHODIMP GetIonChambers(VARIANT* result) override {
    return variantResult("GetIonChambers", result, [&] { return instrument_.GetIonChambers(); });
  }
  STDMETHODIMP GetIonChamberInfo(unsigned char* result) override {
    return trappedResult<unsigned char>("GetIonChamberInfo", result, 0,
                                        [&] { *result = instrument_.GetIonChamberInfo(); });
  }
  STDMETHODIMP CongiureDoseDetector(VARIANT* result) override {
    return variantResult("CongiureDoseDetector", result, [&] { return instrument_.CongiureDoseDetector(); });
  }
  STDMETHODIMP ShowDosimeterMode(VARIANT_BOOL* result) override {
    return trappedResult<VARIANT_BOOL>("ShowDosimeterMode", result, VARIANT_FALSE,
                                       [&] { *result = toVariantBool(instrument_.ShowDosimeterMode()); });
  }
  STDMETHODIMP DisplayIonChamber(VARIANT* result) override {
    return variantResult("DisplayIonChamber", result, [&] { return instrument_.DisplayIonChamber(); });
  }
  STDMETHODIMP ShowDosimeterIonChamber() override {
    return trapped("ShowDosimeterIonChamber", [&] { instrument_.ShowDosimeterIonChamber(); });
  }
  STDMETHODIMP SendCompareData(LONG* lADCF, LONG* lSetTemperature, LONG* lSetPressure, float* rSetTemperature,
                               float* rSetPressure, LONG* lRefTeperature, LONG* lMode,
                               unsigned char* bAutoReset, LONG* lDoseUnit, LONG* lDoseRateUnit,
                               LONG* lFrameRate, LONG* lTempUnit, LONG* lPresUnit, float* rOffPres,
                               float* rOffTemp, VARIANT_BOOL* result) override {
    return trappedResult<VARIANT_BOOL>("SendCompareData", result, VARIANT_FALSE, [&] {
      if (!lADCF || !lSetTemperature || !lSetPressure || !rSetTemperature || !rSetPressure ||
          !lRefTeperature || !lMode || !bAutoReset || !lDoseUnit || !lDoseRateUnit || !lFrameRate ||
          !lTempUnit || !lPresUnit || !rOffPres || !rOffTemp) {
        return;
      }
      CompareData values{*lADCF,          *lSetTemperature, *lSetPressure, *rSetTemperature, *rSetPressure,
                         *lRefTeperature, *lMode,           *bAutoReset,   *lDoseUnit,       *lDoseRateUnit,
                         *lFrameRate,     *lTempUnit,       *lPresUnit,    *rOffPres,        *rOffTemp};
      *result = toVariantBool(instrument_.SendCompareData(values));
      *lADCF = values.lADCF;
      *lSetTemperature = values.lSetTemperature;
      *lSetPressure = values.lSetPressure;
      *rSetTemperature = values.rSetTemperature;
      *rSetPressure = values.rSetPressure;
      *lRefTeperature = values.lRefTeperature;
      *lMode = values.lMode;
      *bAutoReset = values.bAutoReset;
      *lDoseUnit = values.lDoseUnit;
      *lDoseRateUnit = values.lDoseRateUnit;
      *lFrameRate = values.lFrameRate;
      *lTempUnit = values.lTempUnit;
      *lPresUnit = values.lPresUnit;
      *rOffPres = values.rOffPres;
      *rOffTemp = values.rOffTemp;
    });
  }
  STDMETHODIMP SetMasInputtype(VARIANT_BOOL bVal) override {
    return trapped("SetMasInputtype", [&] { instrument_.SetMasInputtype(fromVariantBool(bVal)); });
  }
  STDMETHODIMP GetIonChamberName(BSTR* result) override {
    return textResult("GetIonChamberName", result, [&] { return instrument_.GetIonChamberName(); });
  }
  STDMETHODIMP GetCalFactor(BSTR* result) override {
    return textResult("GetCalFactor", result, [&] { return instrument_.GetCalFactor(); });
  }
  STDMETHODIMP GetCalConst(BSTR* result) override {
    return textResult("GetCalConst", result, [&] { return instrument_.GetCalConst(); });
  }
  STDMETHODIMP mAsExposureFinish(VARIANT_BOOL* result) override {
    return trappedResult<VARIANT_BOOL>("mAsExposureFinish", result, VARIANT_FALSE,
                                       [&] { *result = toVariantBool(instrument_.mAsExposureFinish()); });
  }
  STDMETHODIMP DetectorExposureFinish(VARIANT_BOOL* result) override {
    return trappedResult<VARIANT_BOOL>("DetectorExposureFinish", result, VARIANT_FALSE, [&] {
      *result = toVariantBool(instrument_.DetectorExposureFinish());
    });
  }
  STDMETHODIMP pDetectorName(LONG lIndexCount, BSTR* result) override {
    return textResult("pDetectorName", result, [&] { return instrument_.pDetectorName(lIndexCount); });
  }
  STDMETHODIMP ResetTheFlags() override {
    return trapped("ResetTheFlags", [&] { instrument_.ResetTheFlags(); });
  }

 protected:
  void* queryExtraInterface(REFIID iid) override {
    if (IsEqualIID(iid, IID_IConnectionPointContainer)) return static_cast<IConnectionPointContainer*>(this);
    return nullptr;
  }

 private:
  /// A BSTR result from a portable text.
  template <typename Body>
  HRESULT textResult(const char* member, BSTR* result, Body&& body) noexcept {
    return trappedResult<BSTR>(member, result, nullptr, [&] { *result = toBstr(body()); });
  }
  template <typename Body>
  HRESULT variantResult(const char* member, VARIANT* result, Body&& body) noexcept {
    if (result == nullptr) return E_POINTER;
    VariantInit(result);
    return trapped(member, [&] { toVariant(body(), result); });
  }

  ConnectionPoint connectionPoint_;
  EventSource events_;
  Instrument instrument_;
};

/// Holds one detector information record; only code inside the plug-in stores and reads it.
class StoreDetectorTypeObject final : public DispatchObject<_CStoreDetectorType> {
 public:
  StoreDetectorTypeObject() : DispatchObject(IID__CStoreDetectorType, CLSID_CStoreDetectorType, nullptr) {}

  /// Keeps a copy of the whole record.
  void storeDetectorInfo(const DetectorInfo& info) { info_ = info; }
  /// A copy of the stored record.
  DetectorInfo storedDetectorInfo() const { return info_; }

 private:
  DetectorInfo info_{};
};

template <typename Object>
HRESULT createObject(REFIID iid, void** out) {
  auto* object = new (std::nothrow) Object();
  if (object == nullptr) return E_OUTOFMEMORY;
  const HRESULT hr = object->QueryInterface(iid, out);
  object->Release();
  return hr;
}

}  // namespace

HRESULT createQuery(REFIID iid, void** out) {
  return createObject<QueryObject>(iid, out);
}
HRESULT createInstrument(REFIID iid, void** out) {
  return createObject<InstrumentObject>(iid, out);
}
HRESULT createStoreDetectorType(REFIID iid, void** out) {
  return createObject<StoreDetectorTypeObject>(iid, out);
}

}  // namespace rx9400::win
