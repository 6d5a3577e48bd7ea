plugins {
    id("com.android.application")
}

android {
    namespace = "quorvane.sample"
    compileSdk = 35

    defaultConfig {
        applicationId = "quorvane.sample"
        minSdk = 24
        targetSdk = 35
        versionCode = 1
        versionName = "0.1.0"
    }

    compileOptions {
        sourceCompatibility = JavaVersion.VERSION_1_8
        targetCompatibility = JavaVersion.VERSION_1_8
    }
}

dependencies {
    implementation(project(":library"))
}
