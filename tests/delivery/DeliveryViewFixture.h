#pragma once

#include "DeliveryTestSupport.h"

#include "core/SermonDocument.h"
#include "core/UndoManager.h"
#include "delivery/DeliveryCanvas.h"
#include "delivery/DeliveryClock.h"
#include "delivery/DeliveryPreferences.h"
#include "delivery/DeliveryView.h"

#include <gtest/gtest.h>

#include <QSettings>
#include <QTemporaryDir>

#include <memory>
#include <optional>

// A delivery view over its own document, preferences and hand-moved clock.
class DeliveryViewFixture : public ::testing::Test {
protected:
    void SetUp() override { ensureApplication(); }

    std::unique_ptr<DeliveryPreferences> makePreferences()
    {
        return std::make_unique<DeliveryPreferences>(
            std::make_unique<QSettings>(dir.filePath(QStringLiteral("prefs.ini")), QSettings::IniFormat));
    }

    // The sermon in a shown view 1000 by 700.
    std::unique_ptr<DeliveryView> makeView(SermonNodePtr root, std::optional<int> duration = 20)
    {
        SermonMetadata metadata;
        metadata.duration = duration;
        document = std::make_unique<SermonDocument>(std::move(root), metadata);
        preferences = makePreferences();
        auto view = std::make_unique<DeliveryView>(document.get(), &undo, preferences.get(), nullptr, clock);
        view->resize(1000, 700);
        view->show();
        waitFor([&] { return view->canvasState()->viewportHeight() > 0; });
        return view;
    }

    // Lets a running scroll animation reach its end.
    void finishScroll(DeliveryCanvas* canvas)
    {
        clock->advance(1);
        EXPECT_TRUE(waitFor([&] { return !canvas->isScrollAnimating(); }));
    }

    QTemporaryDir dir;
    std::shared_ptr<ManualDeliveryClock> clock = std::make_shared<ManualDeliveryClock>();
    UndoManager undo;
    std::unique_ptr<SermonDocument> document;
    std::unique_ptr<DeliveryPreferences> preferences;
};
