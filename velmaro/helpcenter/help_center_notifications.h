#pragma once

namespace velmaro {

// The Help Center provider's notification names; each value equals its name.
// The last three are for the user interface: the provider never posts them.
inline constexpr const char* QV_HC_CategoriesStarting = "QV_HC_CategoriesStarting";
inline constexpr const char* QV_HC_CategoriesUpdated = "QV_HC_CategoriesUpdated";
inline constexpr const char* QV_HC_SectionsStarting = "QV_HC_SectionsStarting";
inline constexpr const char* QV_HC_SectionsUpdated = "QV_HC_SectionsUpdated";
inline constexpr const char* QV_HC_ArticlesStarting = "QV_HC_ArticlesStarting";
inline constexpr const char* QV_HC_ArticlesUpdated = "QV_HC_ArticlesUpdated";
inline constexpr const char* QV_HC_SearchStarting = "QV_HC_SearchStarting";
inline constexpr const char* QV_HC_SearchSuccess = "QV_HC_SearchSuccess";
inline constexpr const char* QV_HC_AttachmentsStarting = "QV_HC_AttachmentsStarting";
inline constexpr const char* QV_HC_AttachmentsUpdated = "QV_HC_AttachmentsUpdated";
inline constexpr const char* QV_HC_AttachmentsErrored = "QV_HC_AttachmentsErrored";
inline constexpr const char* QV_HC_ArticleByIdStarting = "QV_HC_ArticleByIdStarting";
inline constexpr const char* QV_HC_ArticleByIdSuccess = "QV_HC_ArticleByIdSuccess";
inline constexpr const char* QV_HC_SectionByIdStarting = "QV_HC_SectionByIdStarting";
inline constexpr const char* QV_HC_SectionByIdSuccess = "QV_HC_SectionByIdSuccess";
inline constexpr const char* QV_HC_CategoryByIdStarting = "QV_HC_CategoryByIdStarting";
inline constexpr const char* QV_HC_CategoryByIdSuccess = "QV_HC_CategoryByIdSuccess";
inline constexpr const char* QV_HC_DeflectionSearchStarting = "QV_HC_DeflectionSearchStarting";
inline constexpr const char* QV_HC_DeflectionSearchSuccess = "QV_HC_DeflectionSearchSuccess";
inline constexpr const char* QV_HC_DeflectionSearchError = "QV_HC_DeflectionSearchError";
inline constexpr const char* QV_HC_UpvoteStarting = "QV_HC_UpvoteStarting";
inline constexpr const char* QV_HC_UpvoteSuccess = "QV_HC_UpvoteSuccess";
inline constexpr const char* QV_HC_UpvoteError = "QV_HC_UpvoteError";
inline constexpr const char* QV_HC_DownvoteStarting = "QV_HC_DownvoteStarting";
inline constexpr const char* QV_HC_DownvoteSuccess = "QV_HC_DownvoteSuccess";
inline constexpr const char* QV_HC_DownvoteError = "QV_HC_DownvoteError";
inline constexpr const char* QV_HC_VoteDeleteStarting = "QV_HC_VoteDeleteStarting";
inline constexpr const char* QV_HC_VoteDeleteSuccess = "QV_HC_VoteDeleteSuccess";
inline constexpr const char* QV_HC_VoteDeleteError = "QV_HC_VoteDeleteError";
inline constexpr const char* QV_HC_RequestError = "QV_HC_RequestError";
inline constexpr const char* QV_HC_CategorySelected = "QV_HC_CategorySelected";
inline constexpr const char* QV_HC_SectionSelected = "QV_HC_SectionSelected";
inline constexpr const char* QV_HC_SectionArticle = "QV_HC_SectionArticle";

}  // namespace velmaro
