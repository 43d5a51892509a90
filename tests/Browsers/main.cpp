#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    qputenv("LC_ALL", "C"); // Where names are hardest to order.
    const QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
