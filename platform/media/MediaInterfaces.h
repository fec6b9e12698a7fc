// All of the media interfaces, with what they exchange and answer.
#pragma once

#include "platform/media/FilterInterfaces.h"
#include "platform/media/GraphInterfaces.h"
#include "platform/media/MediaResults.h"
#include "platform/media/MediaTypes.h"
#include "platform/media/TransportInterfaces.h"
