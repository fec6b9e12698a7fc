// Results of media operations beyond the common ones of Types.h. Negative is failure; the positive ones are
// successes that say something more.
#pragma once

#include "platform/base/Types.h"
#include "platform/com/ClassResults.h"

namespace detail {
constexpr HRESULT ResultOf(uint32_t code) { return static_cast<HRESULT>(code); }
}  // namespace detail

// clang-format off
inline constexpr HRESULT OLE_S_FIRST                = detail::ResultOf(0x00040000);  // first success of interfaces
inline constexpr HRESULT VFW_S_NO_MORE_ITEMS        = detail::ResultOf(0x00040103);  // the end of an enumeration
inline constexpr HRESULT VFW_S_STATE_INTERMEDIATE   = detail::ResultOf(0x00040237);  // the state is still changing
inline constexpr HRESULT VFW_S_NO_STOP_TIME         = detail::ResultOf(0x00040270);  // the sample has a start only

inline constexpr HRESULT E_UNEXPECTED               = detail::ResultOf(0x8000FFFF);  // called out of order

inline constexpr HRESULT VFW_E_ENUM_OUT_OF_SYNC     = detail::ResultOf(0x80040203);  // enumerated things changed
inline constexpr HRESULT VFW_E_ALREADY_CONNECTED    = detail::ResultOf(0x80040204);  // the pin has a connection
inline constexpr HRESULT VFW_E_NO_ACCEPTABLE_TYPES  = detail::ResultOf(0x80040207);  // no type suits both pins
inline constexpr HRESULT VFW_E_INVALID_DIRECTION    = detail::ResultOf(0x80040208);  // two outputs or two inputs
inline constexpr HRESULT VFW_E_NOT_CONNECTED        = detail::ResultOf(0x80040209);  // the pin has no connection
inline constexpr HRESULT VFW_E_NO_ALLOCATOR         = detail::ResultOf(0x8004020A);  // no buffers were agreed on
inline constexpr HRESULT VFW_E_BUFFER_OVERFLOW      = detail::ResultOf(0x8004020D);  // more than the buffer holds
inline constexpr HRESULT VFW_E_BADALIGN             = detail::ResultOf(0x8004020E);  // not aligned as asked for
inline constexpr HRESULT VFW_E_ALREADY_COMMITTED    = detail::ResultOf(0x8004020F);  // the buffers are in use
inline constexpr HRESULT VFW_E_BUFFERS_OUTSTANDING  = detail::ResultOf(0x80040210);  // not all buffers are back
inline constexpr HRESULT VFW_E_NOT_COMMITTED        = detail::ResultOf(0x80040211);  // the buffers aren't in use
inline constexpr HRESULT VFW_E_SIZENOTSET           = detail::ResultOf(0x80040212);  // count or size is missing
inline constexpr HRESULT VFW_E_NO_CLOCK             = detail::ResultOf(0x80040213);  // the filter has no clock
inline constexpr HRESULT VFW_E_NOT_FOUND            = detail::ResultOf(0x80040216);  // no object of that name
inline constexpr HRESULT VFW_E_CANNOT_CONNECT       = detail::ResultOf(0x80040217);  // no way from pin to pin
inline constexpr HRESULT VFW_E_NOT_STOPPED          = detail::ResultOf(0x80040224);  // only while stopped
inline constexpr HRESULT VFW_E_WRONG_STATE          = detail::ResultOf(0x80040227);  // not in this state
inline constexpr HRESULT VFW_E_TYPE_NOT_ACCEPTED    = detail::ResultOf(0x8004022A);  // the pin refuses the type
inline constexpr HRESULT VFW_E_TIMEOUT              = detail::ResultOf(0x8004022E);  // not done in time
inline constexpr HRESULT VFW_E_INVALID_FILE_FORMAT  = detail::ResultOf(0x8004022F);  // no file of a known format
inline constexpr HRESULT VFW_E_SAMPLE_TIME_NOT_SET  = detail::ResultOf(0x80040249);  // the sample has no times
inline constexpr HRESULT VFW_E_MEDIA_TIME_NOT_SET   = detail::ResultOf(0x80040251);  // the sample has no positions
inline constexpr HRESULT VFW_E_NO_TRANSPORT         = detail::ResultOf(0x80040266);  // no common way of transport
// clang-format on
