plugins {
    id("com.android.application")
}

android {
    namespace = "quorvane.sample"
    compileSdk = 36
    enableKotlin = false

    defaultConfig {
        applicationId = "quorvane.sample"
        minSdk = 24
        targetSdk = 36
        versionCode = 1
        versionName = "0.1.0"
    }

    compileOptions {
        sourceCompatibility = JavaVersion.VERSION_11
        targetCompatibility = JavaVersion.VERSION_11
    }
}

dependencies {
    implementation(project(":library"))
}
