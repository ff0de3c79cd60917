#pragma once

#include "libs/Warden_SDK/MorvaneWarden.h"

namespace ServiceRecords {

// What a request takes of the authentication manager, under the names of its functions; its own ones unless
// others are given.
struct WardenFunctions {
  decltype(&MorvaneWarden_Initialize) Initialize = MorvaneWarden_Initialize;
  decltype(&MorvaneWarden_Uninitialize) Uninitialize = MorvaneWarden_Uninitialize;
  decltype(&MorvaneWarden_CreateConnection) CreateConnection = MorvaneWarden_CreateConnection;
  decltype(&MorvaneWarden_DestroyConnection) DestroyConnection = MorvaneWarden_DestroyConnection;
  decltype(&MorvaneWarden_CreateRequestContext) CreateRequestContext = MorvaneWarden_CreateRequestContext;
  decltype(&MorvaneWarden_DestroyContext) DestroyContext = MorvaneWarden_DestroyContext;
  decltype(&MorvaneWarden_ForceRoute) ForceRoute = MorvaneWarden_ForceRoute;
  decltype(&MorvaneWarden_SetQuestions) SetQuestions = MorvaneWarden_SetQuestions;
  decltype(&MorvaneWarden_Prepare2) Prepare2 = MorvaneWarden_Prepare2;
  decltype(&MorvaneWarden_GetTranslatedUrl) GetTranslatedUrl = MorvaneWarden_GetTranslatedUrl;
  decltype(&MorvaneWarden_FreeTranslatedUrl) FreeTranslatedUrl = MorvaneWarden_FreeTranslatedUrl;
  decltype(&MorvaneWarden_GetHeaders) GetHeaders = MorvaneWarden_GetHeaders;
  decltype(&MorvaneWarden_FreeHeaders) FreeHeaders = MorvaneWarden_FreeHeaders;
  decltype(&MorvaneWarden_SetAnsweringUrl) SetAnsweringUrl = MorvaneWarden_SetAnsweringUrl;
  decltype(&MorvaneWarden_ReportHttpResponse) ReportHttpResponse = MorvaneWarden_ReportHttpResponse;
};

}  // namespace ServiceRecords
