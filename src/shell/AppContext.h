#pragma once

class DocumentManager;
class Preferences;
class UpdateService;
class UserPrompts;
class WindowSupervisor;

// The application-wide services a window may call on. Any of them may be absent: the supervisor
// is in a fixture run, and tests leave out what they don't need.
struct AppContext {
    Preferences* preferences = nullptr;
    UserPrompts* prompts = nullptr;
    DocumentManager* documents = nullptr;
    WindowSupervisor* supervisor = nullptr;
    const UpdateService* updates = nullptr;
};
