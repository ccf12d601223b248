// What the type library of talxrend.dll has to state: types by name, each function with its slot in the
// vtable and its hexadecimal dispid.
#pragma once

namespace talx::test {

inline constexpr const wchar_t* contract =
    LR"text(dispinterface ITalGDIRenderEngine_Disp "Interface to be used by dispatch clients only." flags 1010 : stdole.IDispatch
interface ITalRenderEngine "Internal Hemlar interface." : stdole.IUnknown
  3 101c003 DumpInfo(out retval BSTR* info) "Dumps diagnostic information about the state of the rendering engine."
  4 101c004 Initialize(in __int64 Hwnd, in long Width, in long Height) "Initialize the rendering engine for use with the passed window, at the specified width and height."
  5 101c005 get Initialized(out retval VARIANT_BOOL* pVal) "Return true if this engine has been successfully prepared, false otherwise."
  6 101c006 GetExtent(out long* Width, out long* Height) "Gets the screen width and height of the rendering area."
  7 101c007 SetExtent(in long Width, in long Height) "Sets the screen width and height of the rendering area."
  8 101c008 BeginLayerUpdate(in long Lyr, in long L, in long T, in long R, in long B) "Begins layer. The passed rectangle is erased."
  9 101c009 EndLayerUpdate(in long Lyr, in long L, in long T, in long R, in long B) "Called after all known layer updates are complete."
  10 101c00a DrawImage(in long Lyr, in talxstd.ITalImage* Image, in long Sx, in long Sy, in double Scale, in long L, in long T, in long R, in long B, in OLE_COLOR PassColor) "Draws the passed image at screen coordinate (Sx, Sy) at the specified scale, only filling in the screen rectangle specified by l, t, r, b."
  11 101c00b Fill(in long Lyr, in long Ulx, in long Uly, in long Lrx, in long Lry, in OLE_COLOR Clr) "Fills the area of the specified layer with the passed color."
  12 101c00c GetDrawContext(in long Lyr, out retval __int64* phdc) "Returns the draw context."
  13 101c00d ReleaseDrawContext(long Lyr, in __int64 Hdc) "Releases drawing context."
  14 101c00e RefreshScreen(in long Sx, in long Sy, in long Ulx, in long Uly, in long Lrx, in long Lry) "Refresh the screen."
  15 101c00f put Layers(in long) "Controls the number of logical rendering layers."
  16 101c00f get Layers(out retval long*)
  17 101c010 AdviseRenderEvents(in ITalRenderEngineEvents* EventSink) "Allows the owner to provide event sink."
  18 101c011 UnAdvise() "Shuts down events."
  19 101c013 PaletteChange() "Must be called in response to a message."
  20 101c014 get Image8GreyColorMap(in unsigned char GreyVal, out retval OLE_COLOR* pColor) "Sets color map applied to grey scale images."
  21 101c014 put Image8GreyColorMap(in unsigned char, in OLE_COLOR)
  22 101c01f get Image16GreyColorMap(out retval SAFEARRAY(int)* pVal) "Sets color map applied to 16-bit grey scale images."
  23 101c01f put Image16GreyColorMap(in SAFEARRAY(int)*)
  24 101c020 ClearImage16GreyColorMap() "Clears any user specified 16-bit greyscale color mapping."
  25 101c021 UnsetColorMaps() "Clears internal colormaps when a null image is displayed."
  26 101c022 get Image8GreyWholeColorMap(out retval SAFEARRAY(int)* pVal) "Sets color map applied to 8-bit grey scale images."
  27 101c022 put Image8GreyWholeColorMap(in SAFEARRAY(int)*)
  28 101c023 ClearImage8GreyColorMap() "Clears any user specified 8-bit greyscale color mapping."
  29 101c024 get Image16RangeColorMap(out retval SAFEARRAY(int)* pVal) "Sets color map applied to 16-bit range images."
  30 101c024 put Image16RangeColorMap(in SAFEARRAY(int)*)
  31 101c025 ClearImage16RangeColorMap() "Clears any user specified 16-bit range color mapping."
  32 101c026 get VisiblePixelMaskEnable(out retval VARIANT_BOOL* pShowMask) "Enables visible pixel mask."
  33 101c026 put VisiblePixelMaskEnable(in VARIANT_BOOL)
  34 101c027 get VisiblePixelMaskColor(out retval OLE_COLOR* pMaskColor) "Sets visible pixel mask color."
  35 101c027 put VisiblePixelMaskColor(in OLE_COLOR)
interface ITalRenderEngine2 "Interface extending ITalRenderEngine to allow for efficient 256 color icon blending." : ITalRenderEngine
  36 101c016 DrawIcon8(in long Layer, in talxstd.ITalImage8Grey* IconData, in SAFEARRAY(long)* ColorMap, in SAFEARRAY(unsigned char)* TransparencyMap, in double X, in double Y, in double Scale, in long L, in long T, in long R, in long B) "Draws a 256 color icon as specified by IconData, ColorMap, and TransparencyMap."
interface ITalRenderEngineEvents "Internal Hemlar interface." : stdole.IUnknown
  3 0 InvalidateLayers(in long StartLayer, in long EndLayer, in long L, in long T, in long R, in long B) "Informs owner that the range of layers needs to be redrawn in the given screen rectangle."
interface ITalRenderEngineScalingParams "Interface allowing access to scaling interpolation." : stdole.IUnknown
  3 101c01e put ScalingMethod(in TalRenderEngineScalingMethodConstants) "Controls the interpolation used for scaling."
  4 101c01e get ScalingMethod(out retval TalRenderEngineScalingMethodConstants*)
dispinterface ITalRenderEngine_Disp "Interface to be used by dispatch clients only." flags 1010 : stdole.IDispatch
interface ITalRenderTargetAccess "Interface allowing render target to be changed." : stdole.IUnknown
  3 101c01a SetRenderTargetFromHDC(in __int64 Hdc) "Changes rendering target from screen to the passed device context."
  4 101c01b SetRenderTargetFromDIB(in stdole.IPictureDisp* Picture)
  5 101c01c CreateDIBRenderTarget(in optional TalRenderTargetFormatConstants Format, out retval stdole.IPictureDisp** pDIB)
coclass TalGDIRenderEngine "A render engine object based on GDI." flags 12 : ITalRenderEngine(default) ITalRenderEngine2 ITalRenderTargetAccess ITalRenderEngineScalingParams
coclass TalRenderEngine "A render engine object." flags 12 : ITalRenderEngine(default) ITalRenderEngine2 ITalRenderEngineScalingParams
enum TalRenderEngineScalingMethodConstants
  talRenderEngineScalingMethodNoInterpolation = 0
  talRenderEngineScalingMethodBilinearInterpolation = 1
enum TalRenderTargetFormatConstants
  talRenderTargetFormatUnspecified = 0
  talRenderTargetFormatPal8 = 8
  talRenderTargetFormatRGB15 = 15
  talRenderTargetFormatRGB16 = 16
  talRenderTargetFormatRGB24 = 24
  talRenderTargetFormatRGB32 = 32
)text";

} // namespace talx::test
