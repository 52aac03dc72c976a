// A fixture for tests of the macro layers in process: what would go to a message box is captured
// in order (CapturedMessages), with graphics counted as up and batch mode off so that errors take
// that path; both are put back, and pending errors cleared, after each test.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/kernel/errors.h"
#include "base/kernel/globals.h"

inline std::vector<std::string> CapturedMessages;

class MessageCaptureTest : public ::testing::Test {
  protected:
    void SetUp() override {
        CapturedMessages.clear();
        savedGraphics = GraphicsAreInitialized;
        savedBatch = InBatchMode;
        GraphicsAreInitialized = true;
        InBatchMode = false;
        MessageBoxRegisterCallback(&capture);
    }
    void TearDown() override {
        MessageBoxRegisterCallback(nullptr);
        GraphicsAreInitialized = savedGraphics;
        InBatchMode = savedBatch;
        ClearPendingErrors();
    }

  private:
    static MessageBoxReply_e capture(const char *text, MessageBoxType_e) {
        CapturedMessages.push_back(text);
        return MessageBoxReply_Ok;
    }
    bool savedGraphics = false;
    bool savedBatch = false;
};
