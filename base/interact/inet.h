// The transfer layer for files named by ftp and http URLs. Transfers are not available in this
// build: downloads and uploads fail with "Transfer failed.".
#pragma once

enum INetTransferMode_e { INetTransferMode_Ascii = 0, INetTransferMode_Binary = 1 };

void INetInitialize();
void INetFinalize();
// True for "ftp" and "http", without regard to case.
bool INetIsSupportedScheme(const char *scheme);
bool INetFileExists(const char *url, bool reportErrors);
bool INetDownloadFile(const char *url, const char *localFile, INetTransferMode_e mode, bool confirmOverwrite,
                      bool reportErrors);
bool INetUploadFile(const char *localFile, const char *url, INetTransferMode_e mode, bool confirmOverwrite,
                    bool reportErrors);
